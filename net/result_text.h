// Texts of result codes.
#ifndef KFL_NET_RESULT_TEXT_H
#define KFL_NET_RESULT_TEXT_H

namespace kfl::detail {

// The entry for `code`; null where there is none, as for every negative number.
template <unsigned int count>
const char* resultText(const char* const (&texts)[count], int code) {
    const unsigned int index = static_cast<unsigned int>(code);
    return index < count ? texts[index] : nullptr;
}

}  // namespace kfl::detail

#endif
