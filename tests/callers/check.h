/* The checks of these programs, which use no test library. */
#ifndef ZELVANE_TESTS_CALLERS_CHECK_H
#define ZELVANE_TESTS_CALLERS_CHECK_H

#include <stdio.h>
#include <stdlib.h>

#define CHECK(condition)                                                  \
  do {                                                                    \
    if (!(condition)) {                                                   \
      fprintf(stderr, "%s:%d: not %s\n", __FILE__, __LINE__, #condition); \
      exit(1);                                                            \
    }                                                                     \
  } while (0)

#endif
