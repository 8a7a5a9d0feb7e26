// ZESTRA_EXPORT marks the classes and functions that the shared library
// exports. The library is built with hidden visibility by default, so
// anything without the mark stays internal.
#ifndef ZESTRA_EXPORT_H_
#define ZESTRA_EXPORT_H_

#if defined(_WIN32)
#if defined(ZESTRA_BUILDING_LIBRARY)
#define ZESTRA_EXPORT __declspec(dllexport)
#else
#define ZESTRA_EXPORT __declspec(dllimport)
#endif
#else
#define ZESTRA_EXPORT __attribute__((visibility("default")))
#endif

#endif  // ZESTRA_EXPORT_H_
