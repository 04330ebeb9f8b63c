// The mark of everything that libkfl.so exports; all other names of the library stay hidden.
#ifndef KFL_EXPORT_H
#define KFL_EXPORT_H

// Stands in front of a function or variable, and behind `class`.
#define KFL_EXPORT __attribute__((visibility("default")))

#endif
