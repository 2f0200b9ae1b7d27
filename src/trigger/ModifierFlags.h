#pragma once

// The four watched device-independent modifier bits of Part 2.2, kept as the spec numbers them.
// On Linux, Ctrl sets `command`, Alt sets `option` and Super sets `control` (PLATFORM.md, Keys).

#include <cstdint>

namespace corvane::ModifierFlags {

using Flags = std::uint64_t;

inline constexpr Flags shift = 0x20000;
inline constexpr Flags control = 0x40000;
inline constexpr Flags option = 0x80000;
inline constexpr Flags command = 0x100000;
inline constexpr Flags watchedMask = 0x1E0000;

} // namespace corvane::ModifierFlags
