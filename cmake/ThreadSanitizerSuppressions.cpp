// Linked into every program that is built for the thread sanitizer, which asks for it by name.
// GLib and GIO are not built for it, so it cannot see how their own threads take turns.
extern "C" const char *__tsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier,cert-*)

extern "C" const char *
__tsan_default_suppressions() { // NOLINT(bugprone-reserved-identifier,cert-*)
    return "called_from_lib:libgio-2.0.so\n"
           "called_from_lib:libglib-2.0.so\n"
           "called_from_lib:libgobject-2.0.so\n"
           "race:libgio-2.0.so\n"
           "race:libglib-2.0.so\n";
}
