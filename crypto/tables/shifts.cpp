#include "crypto/shifts.h"

#include "kfl/Rijndael.h"

namespace kfl::AES {
namespace {

// By columns and row.
constexpr int there(int columns, int row) {
    return detail::shift(columns, row, detail::enciphering);
}
constexpr int back(int columns, int row) {
    return detail::shift(columns, row, detail::deciphering);
}

}  // namespace

const int Rijndael::_shifts[3][4][2] = {
    {{there(4, 0), back(4, 0)},
     {there(4, 1), back(4, 1)},
     {there(4, 2), back(4, 2)},
     {there(4, 3), back(4, 3)}},
    {{there(6, 0), back(6, 0)},
     {there(6, 1), back(6, 1)},
     {there(6, 2), back(6, 2)},
     {there(6, 3), back(6, 3)}},
    {{there(8, 0), back(8, 0)},
     {there(8, 1), back(8, 1)},
     {there(8, 2), back(8, 2)},
     {there(8, 3), back(8, 3)}},
};

}  // namespace kfl::AES
