extern const char* const text;

int larger(int a, int b);
int untested(int a);
bool isZero(unsigned int a);
int counted(int turns);
