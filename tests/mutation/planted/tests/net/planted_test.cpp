#include "../../net/planted.h"

int main() {
    const bool isRight =
        larger(1, 2) == 2 && larger(2, 1) == 2 && isZero(0) && !isZero(1) && counted(3) == 3;
    return isRight ? 0 : 1;
}
