#include "registry/CRegCitrix.h"

#include "registry/TypedValues.h"

CRegCitrix::CRegCitrix(bool readOnly) : CRegBase(aut::kAutoUpdateKey, "Citrix", readOnly) {}

unsigned long CRegCitrix::GetUserNumber() { return aut::readNumber(*this, "UsersNumber"); }

unsigned long CRegCitrix::GetMsgNumber() { return aut::readNumber(*this, "MsgNumber"); }
