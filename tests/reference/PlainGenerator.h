// The log written a second time, in the plainest way: a file stream of the standard library, string
// streams, sprintf, one statement after the other. The random walk compares the library with it byte by
// byte, the benchmark measures the library beside it. It shares no code with the library but the CADI
// types, and its operations have the names that the library's have.
//
// File is std::ofstream or a stream that behaves like one.

#ifndef SCRIVEL_TESTS_REFERENCE_PLAINGENERATOR_H
#define SCRIVEL_TESTS_REFERENCE_PLAINGENERATOR_H

#include "reference/PlainConnect.h"
#include "reference/PlainRun.h"

#endif
