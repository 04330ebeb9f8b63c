#include "planted.h"

#define SMALLER(a, b) ((a) < (b))

// A change here: a < b, is none.
const char* const text = "nor here: a < b";

// How often it was asked, for nobody.
static volatile unsigned int questions;

int larger(int a, int b) {
    questions += 1;
    return SMALLER(a, b) ? b : a;
}

int untested(int a) { return a + 7; }

bool isZero(unsigned int a) { return a <= 0; }

int counted(int turns) {
    int n = 0;
    while (n != turns) ++n;
    return n;
}
