// Linked into every program that is built for the thread sanitizer, which asks for it by name.
// GLib, Qt, the bus library and OpenGL's drivers are not built for it, so it cannot see how their
// own threads take turns. Xlib unlocks a display twice when its connection is lost.
extern "C" const char *
__tsan_default_suppressions(); // NOLINT(*-reserved-identifier,cert-*,readability-identifier-naming)

extern "C" const char *
__tsan_default_suppressions() { // NOLINT(*-reserved-identifier,cert-*,readability-identifier-naming)
    return "called_from_lib:libgio-2.0.so\n"
           "called_from_lib:libglib-2.0.so\n"
           "called_from_lib:libgobject-2.0.so\n"
           "race:libgio-2.0.so\n"
           "race:libglib-2.0.so\n"
           "race:libQt6\n"
           "race:libdbus-1.so\n"
           "deadlock:libdbus-1.so\n"
           "mutex:libX11.so\n"
           "race:_dri.so\n"
           "race:libLLVM\n";
}
