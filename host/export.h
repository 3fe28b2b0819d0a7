// Visibility of the symbols that the host library and the modules export.
#pragma once

#if defined(_WIN32)
#if defined(VORNA_BUILDING_LIBRARY)
#define VORNA_API __declspec(dllexport)
#else
#define VORNA_API __declspec(dllimport)
#endif
#define VORNA_MODULE_EXPORT __declspec(dllexport)
#else
#define VORNA_API __attribute__((visibility("default")))
#define VORNA_MODULE_EXPORT __attribute__((visibility("default")))
#endif
