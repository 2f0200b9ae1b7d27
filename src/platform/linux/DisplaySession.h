#pragma once

// The display a program shows its windows on, found before its application object exists: the
// Wayland compositor named by WAYLAND_DISPLAY (or the session type), else the X server named by
// DISPLAY. Without one, Qt would abort with a core dump; instead the program says in one line what
// is missing and what to do.

#include <QString>

namespace corvane::DisplaySession {

enum class Kind { x11, wayland, none };

struct Found {
    Kind kind = Kind::none;
    QString whyNot; // for none: what is missing, in one line
};

Found find();

// The session Qt's platform (QT_QPA_PLATFORM) is for: wayland, xcb, or none of the two.
Kind chosen();

// For a program's main(), before its application object: chooses the display (Qt's wayland or xcb
// platform), or, when there is none, prints "PROGRAM: WHY" on stderr and returns false (exit 1).
// Arguments that only ask for --help or --version need no display (Qt's offscreen platform). A
// platform the user chose (QT_QPA_PLATFORM) is kept.
bool prepare(const char* program, int argc, char** argv);

} // namespace corvane::DisplaySession
