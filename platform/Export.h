#pragma once

/// @file
/// The marks of what a shared library shows.

/// @def QM_EXPORT
/// Marks what a library shows, where it is built.
/// @def QM_IMPORT
/// Marks what a library shows, where it is used.
/// @def QM_PRIVATE
/// Hides a member of a class that is shown.
#if defined(_WIN32)
#define QM_EXPORT __declspec(dllexport)
#define QM_IMPORT __declspec(dllimport)
#define QM_PRIVATE
#else
#define QM_EXPORT __attribute__((visibility("default")))
#define QM_IMPORT __attribute__((visibility("default")))
#define QM_PRIVATE __attribute__((visibility("hidden")))
#endif

/// @def QMPLATFORM_API
/// Marks what the platform library shows.
#if defined(qmPlatform_EXPORTS) // defined by the build of the library itself
#define QMPLATFORM_API QM_EXPORT
#else
#define QMPLATFORM_API QM_IMPORT
#endif
