#include <cstdio>
int main() { std::puts("kfl 1.0.0"); }
