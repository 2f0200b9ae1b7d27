#pragma once

// The fuzzers' shared pieces: the input as text, and a check that stops the run (libFuzzer keeps
// the input as a crash) when a property of the code under test does not hold.

#include <QString>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace corvane::fuzz {

inline QString text(const uint8_t* data, size_t size)
{
    return QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
}

inline void require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "fuzz: property broken: %s\n", what);
        std::abort();
    }
}

} // namespace corvane::fuzz
