/**
 * @file
 * Base integer types, their widths, and the few macros that hide compiler differences.
 *
 * Valid C99 and C++17. Every other header of the library includes this one.
 */
#ifndef KOR_UTILS_SYSDEP_KORBASETYPES_H
#define KOR_UTILS_SYSDEP_KORBASETYPES_H

#include <stddef.h>
#include <stdint.h>

/** @name Version
 * @{ */
/** The version of the library; the build reads it from here and nowhere else. */
#define KOR_VERSION_MAJOR 0
#define KOR_VERSION_MINOR 1
#define KOR_VERSION_PATCH 0
/** @} */

typedef int32_t KorInt;         /**< pixel arithmetic, matrix coefficients */
typedef uint32_t KorUint;       /**< byte positions, blend weights, angles */
typedef int8_t KorInt8;         /**< signed bytes */
typedef uint8_t KorUint8;       /**< every sample of every plane, every byte of a packed pixel */
typedef int16_t KorInt16;       /**< entries of the noise table */
typedef uint16_t KorUint16;     /**< 16-bit quantities */
typedef uint8_t KorBool;        /**< zero is false, any other value is true */
typedef size_t KorSizeT;        /**< widths, heights, positions, pitches of planes that run downwards */
typedef ptrdiff_t KorDistanceT; /**< pitches that may run upwards */

/** KOR_STATIC_ASSERT(name, condition): a compile-time check; C99 has none of its own. */
#if defined(__cplusplus)
#define KOR_STATIC_ASSERT(name, condition) static_assert(condition, #name)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define KOR_STATIC_ASSERT(name, condition) _Static_assert(condition, #name)
#else
#define KOR_STATIC_ASSERT(name, condition) typedef char KorStaticAssert_##name[(condition) ? 1 : -1]
#endif

KOR_STATIC_ASSERT(KorInt_is_32_bits, sizeof(KorInt) == 4);
KOR_STATIC_ASSERT(KorUint_is_32_bits, sizeof(KorUint) == 4);
KOR_STATIC_ASSERT(KorInt8_is_8_bits, sizeof(KorInt8) == 1);
KOR_STATIC_ASSERT(KorUint8_is_8_bits, sizeof(KorUint8) == 1);
KOR_STATIC_ASSERT(KorInt16_is_16_bits, sizeof(KorInt16) == 2);
KOR_STATIC_ASSERT(KorUint16_is_16_bits, sizeof(KorUint16) == 2);
KOR_STATIC_ASSERT(KorBool_is_8_bits, sizeof(KorBool) == 1);
KOR_STATIC_ASSERT(KorSizeT_is_as_wide_as_a_pointer, sizeof(KorSizeT) == sizeof(void*));
KOR_STATIC_ASSERT(KorDistanceT_is_as_wide_as_a_pointer, sizeof(KorDistanceT) == sizeof(void*));

/** KOR_CAST(type, value): the cast of inline functions that C and C++ share. */
#if defined(__cplusplus)
#define KOR_CAST(type, value) static_cast<type>(value)
#else
#define KOR_CAST(type, value) ((type)(value))
#endif

/** @name C linkage
 * @{ */
/** C linkage for declarations that C and C++ share. */
#if defined(__cplusplus)
#define KOR_EXTERN_C_BEGIN extern "C" {
#define KOR_EXTERN_C_END }
#else
#define KOR_EXTERN_C_BEGIN
#define KOR_EXTERN_C_END
#endif
/** @} */

/**
 * KOR_API marks what a shared library exports. The build defines KOR_SHARED for everything that builds or uses the
 * shared library, and KOR_BUILDING only for the library itself.
 */
#if defined(_WIN32) && defined(KOR_SHARED) && defined(KOR_BUILDING)
#define KOR_API __declspec(dllexport)
#elif defined(_WIN32) && defined(KOR_SHARED)
#define KOR_API __declspec(dllimport)
#elif defined(__GNUC__)
#define KOR_API __attribute__((visibility("default")))
#else
#define KOR_API
#endif

/**
 * KOR_SERVICE marks what the product must provide, in whichever module it defines it. A DLL cannot leave that
 * open: on Windows the shared library imports the services from the shared library of the platform target.
 */
#if defined(_WIN32) && defined(KOR_SHARED) && defined(KOR_BUILDING)
#define KOR_SERVICE __declspec(dllimport)
#elif defined(_WIN32) && defined(KOR_SHARED) && defined(KOR_BUILDING_SERVICES)
#define KOR_SERVICE __declspec(dllexport)
#elif defined(__GNUC__) && !defined(_WIN32)
#define KOR_SERVICE __attribute__((visibility("default")))
#else
#define KOR_SERVICE
#endif

/** KOR_RESTRICT: within the scope of the pointer, nothing else accesses the bytes that it writes. */
#if defined(__GNUC__) || defined(_MSC_VER)
#define KOR_RESTRICT __restrict
#elif !defined(__cplusplus)
#define KOR_RESTRICT restrict
#else
#define KOR_RESTRICT
#endif

#endif
