#!/bin/bash
# sign.sh <certificate> <key> <file>: signs a program or library in place.
set -eu
osslsigncode sign -certs "$1" -key "$2" -h sha256 -in "$3" -out "$3.signed" >/dev/null
mv "$3.signed" "$3"
