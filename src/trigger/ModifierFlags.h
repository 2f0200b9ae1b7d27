#pragma once

// The four watched device-independent modifier bits, numbered as the stored trigger setting names
// them ("command", "option", "control"). On Linux, Ctrl sets `command`, Alt sets `option` and Super
// sets `control`.

#include <cstdint>

namespace corvane::ModifierFlags {

using Flags = std::uint64_t;

inline constexpr Flags shift = 0x20000;
inline constexpr Flags control = 0x40000;
inline constexpr Flags option = 0x80000;
inline constexpr Flags command = 0x100000;
inline constexpr Flags watchedMask = 0x1E0000;

} // namespace corvane::ModifierFlags
