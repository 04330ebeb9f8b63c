// What is measured of ELL, whose own headers are not for C++.
#ifndef KFL_BENCHMARKS_ELL_H
#define KFL_BENCHMARKS_ELL_H

#include <cstddef>

extern "C" {

struct l_string;
l_string* l_string_new(std::size_t initialLength);
l_string* l_string_append(l_string* to, const char* text);
l_string* l_string_append_c(l_string* to, char c);
char* l_string_unwrap(l_string* string);

struct l_settings;
l_settings* l_settings_new();
void l_settings_free(l_settings* settings);
bool l_settings_load_from_file(l_settings* settings, const char* path);
const char* l_settings_get_value(const l_settings* settings, const char* group, const char* key);

void l_free(void* memory);

}  // extern "C"

#endif
