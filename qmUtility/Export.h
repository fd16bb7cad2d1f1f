// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Export macros of the project's libraries. `qmX_EXPORTS` is defined by the build of the library `qmX`
/// itself.

/// @def QMUTILITY_EXPORT
/// Exports a class or function from the library that is being built.
/// @def QMUTILITY_IMPORT
/// Imports a class or function from another library.
/// @def QMUTILITY_PRIVATE
/// Hides a member of an exported class.
#if defined(_WIN32)
#define QMUTILITY_EXPORT __declspec(dllexport)
#define QMUTILITY_IMPORT __declspec(dllimport)
#define QMUTILITY_PRIVATE
#else
#define QMUTILITY_EXPORT __attribute__((visibility("default")))
#define QMUTILITY_IMPORT __attribute__((visibility("default")))
#define QMUTILITY_PRIVATE __attribute__((visibility("hidden")))
#endif

/// @def QMUTILITY_API
/// Public interface of qmUtility.
#if defined(qmUtility_EXPORTS)
#define QMUTILITY_API QMUTILITY_EXPORT
#else
#define QMUTILITY_API QMUTILITY_IMPORT
#endif

/// @def QMFRAMEWORK_API
/// Public interface of qmFramework.
#if defined(qmFramework_EXPORTS)
#define QMFRAMEWORK_API QMUTILITY_EXPORT
#else
#define QMFRAMEWORK_API QMUTILITY_IMPORT
#endif

/// @def QMCOMMONBASE_API
/// Public interface of the host module qmCommonBase.
#if defined(qmCommonBase_EXPORTS)
#define QMCOMMONBASE_API QMUTILITY_EXPORT
#else
#define QMCOMMONBASE_API QMUTILITY_IMPORT
#endif

/// @def QMCONSOLE_API
/// Public interface of the host module qmConsole.
#if defined(qmConsole_EXPORTS)
#define QMCONSOLE_API QMUTILITY_EXPORT
#else
#define QMCONSOLE_API QMUTILITY_IMPORT
#endif

/// @def QMSYSTEMINFO_API
/// Public interface of the host module qmSystemInfo.
#if defined(qmSystemInfo_EXPORTS)
#define QMSYSTEMINFO_API QMUTILITY_EXPORT
#else
#define QMSYSTEMINFO_API QMUTILITY_IMPORT
#endif
