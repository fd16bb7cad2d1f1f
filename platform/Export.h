#pragma once

/// @file
/// The marks of what a shared library shows: `QM_EXPORT` where it is built, `QM_IMPORT` where it is used, and
/// `QMPLATFORM_API`, which is one or the other for what the platform library shows. `QM_PRIVATE` hides a
/// member of a class that is shown.

#if defined(_WIN32)
#define QM_EXPORT __declspec(dllexport)
#define QM_IMPORT __declspec(dllimport)
#define QM_PRIVATE
#else
#define QM_EXPORT __attribute__((visibility("default")))
#define QM_IMPORT __attribute__((visibility("default")))
#define QM_PRIVATE __attribute__((visibility("hidden")))
#endif

#if defined(qmPlatform_EXPORTS) // defined by the build of the library itself
#define QMPLATFORM_API QM_EXPORT
#else
#define QMPLATFORM_API QM_IMPORT
#endif
