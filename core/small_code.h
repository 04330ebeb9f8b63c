// Whether the compiler was asked for small code rather than for fast code, and what follows.
#ifndef KFL_CORE_SMALL_CODE_H
#define KFL_CORE_SMALL_CODE_H

namespace kfl::detail {

#ifdef __OPTIMIZE_SIZE__
constexpr bool wantsSmallCode = true;
#else
constexpr bool wantsSmallCode = false;
#endif

// Where functions of a few instructions begin, which are called item by item: one that lies in two
// lines of the instruction cache takes a cycle more.
constexpr unsigned int shortFunctionAlignment = wantsSmallCode ? 4 : 64;

}  // namespace kfl::detail

#endif
