// Cp1251.h: conversion into a caller's buffer, for those that write records in bulk.
#ifndef ORVO_PLATFORM_MDX_CP1251_H
#define ORVO_PLATFORM_MDX_CP1251_H

#include <cstddef>

namespace orvo::mdx {

/// Converts UTF-8 to Windows-1251 (see toCp1251) into `out`, which has room for `length` bytes.
/// Gives the number of bytes written.
size_t convertToCp1251(const char* utf8, size_t length, char* out) noexcept;

} // namespace orvo::mdx

#endif
