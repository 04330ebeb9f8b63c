// The version of the library, in the one place from which the build, the packages and hosts take
// it.
#ifndef KFL_VERSION_H
#define KFL_VERSION_H

// Changes with the interface: hosts are then built anew. It is the number in the library's name.
#define KFL_VERSION_MAJOR 1
// Changes when something is added.
#define KFL_VERSION_MINOR 0
// Changes when something is corrected.
#define KFL_VERSION_PATCH 0

// One number to compare with: major * 10000 + minor * 100 + patch.
#define KFL_VERSION (KFL_VERSION_MAJOR * 10000 + KFL_VERSION_MINOR * 100 + KFL_VERSION_PATCH)

// The same as text, "major.minor.patch".
#define KFL_VERSION_STRING "1.0.0"

#endif
