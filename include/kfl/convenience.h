// What makes the library handier for hosts in C++11 and later. All of it is inline in these headers
// and built on the public interface alone; the library and its promise know nothing of it, and
// kfl/kfl.h does not include it. It needs libc and the language support only, and throws nothing.
#ifndef KFL_CONVENIENCE_H
#define KFL_CONVENIENCE_H

#include "kfl/convenience/Ref.h"
#include "kfl/convenience/SocketGuard.h"
#include "kfl/convenience/WaitStatus.h"
#include "kfl/convenience/datagrams.h"
#include "kfl/convenience/ranges.h"
#include "kfl/convenience/view.h"
#include "kfl/convenience/wipe.h"

#endif
