#ifndef VORX_VCC_EXPORT_H
#define VORX_VCC_EXPORT_H

// Marks the symbols of the core's shared libraries that other libraries use. Everything
// else stays hidden (the project builds with -fvisibility=hidden).
#define VCC_EXPORT __attribute__((visibility("default")))

#endif  // VORX_VCC_EXPORT_H
