# What `cmake --install` lays out.
