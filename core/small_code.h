// Whether the compiler was asked for small code rather than for fast code.
#ifndef KFL_CORE_SMALL_CODE_H
#define KFL_CORE_SMALL_CODE_H

namespace kfl::detail {

#ifdef __OPTIMIZE_SIZE__
constexpr bool wantsSmallCode = true;
#else
constexpr bool wantsSmallCode = false;
#endif

}  // namespace kfl::detail

#endif
