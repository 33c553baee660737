#pragma once

// Marks what the shared library offers; everything else is built with hidden visibility.
#define GQLIB_EXPORT __attribute__((visibility("default")))
