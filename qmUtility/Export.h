// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Export macros of the project's libraries. The build of the library `qmX` itself defines `qmX_EXPORTS`.

#if defined(_WIN32)
#define QMUTILITY_EXPORT __declspec(dllexport)
#define QMUTILITY_IMPORT __declspec(dllimport)
#define QMUTILITY_PRIVATE
#else
#define QMUTILITY_EXPORT __attribute__((visibility("default")))  ///< exports from the library being built
#define QMUTILITY_IMPORT __attribute__((visibility("default")))  ///< imports from another library
#define QMUTILITY_PRIVATE __attribute__((visibility("hidden")))  ///< hides a member of an exported class
#endif

#if defined(qmUtility_EXPORTS)
#define QMUTILITY_API QMUTILITY_EXPORT
#else
#define QMUTILITY_API QMUTILITY_IMPORT  ///< public interface of qmUtility
#endif

#if defined(qmFramework_EXPORTS)
#define QMFRAMEWORK_API QMUTILITY_EXPORT
#else
#define QMFRAMEWORK_API QMUTILITY_IMPORT  ///< public interface of qmFramework
#endif

#if defined(qmCommonBase_EXPORTS)
#define QMCOMMONBASE_API QMUTILITY_EXPORT
#else
#define QMCOMMONBASE_API QMUTILITY_IMPORT  ///< public interface of the host module qmCommonBase
#endif

#if defined(qmConsole_EXPORTS)
#define QMCONSOLE_API QMUTILITY_EXPORT
#else
#define QMCONSOLE_API QMUTILITY_IMPORT  ///< public interface of the host module qmConsole
#endif

#if defined(qmSystemInfo_EXPORTS)
#define QMSYSTEMINFO_API QMUTILITY_EXPORT
#else
#define QMSYSTEMINFO_API QMUTILITY_IMPORT  ///< public interface of the host module qmSystemInfo
#endif
