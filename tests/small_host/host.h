// What the plain programs share: the names that a host supplies, and checks that print and count.
// No GoogleTest and no C++ library, so that these programs run on the smallest systems.
#ifndef KFL_TESTS_SMALL_HOST_HOST_H
#define KFL_TESTS_SMALL_HOST_HOST_H

#include "kfl/Host.h"

// The last reported text, and how many there were.
extern char lastEvent[256];
extern int eventCount;

void check(bool holds, const char* what, const char* file, int line);
#define CHECK(what) check(what, #what, __FILE__, __LINE__)

// Says how the checks went; the program's status.
int checksEnd();

#endif
