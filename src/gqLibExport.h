#pragma once

#if __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "gqLib needs a little-endian machine: the heads of stored waves are copied as they are in memory."
#endif

#include <QtGlobal>

// The major version of Qt for which the library was built. The CMake and pkg-config files of the library for Qt 6
// define it.
#ifndef GQLIB_QT
#define GQLIB_QT 5
#endif
#if GQLIB_QT != QT_VERSION_MAJOR
#error "These gqLib headers and the included Qt have different major versions. Use gqLib with Qt 5, gqLibQt6 with Qt 6."
#endif

// Marks what the shared library offers; everything else is built with hidden visibility.
#define GQLIB_EXPORT __attribute__((visibility("default")))
