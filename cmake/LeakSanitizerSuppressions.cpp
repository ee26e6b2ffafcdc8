// Linked into every program that is built for the address sanitizer, which asks for it by name.
// OpenGL's drivers leak a little with each of their contexts. They are unloaded before the leaks
// are told, which would leave no name to know them by: so nothing is unloaded here.
extern "C" int dlclose(void *handle);
extern "C" const char *
__lsan_default_suppressions(); // NOLINT(*-reserved-identifier,cert-*,readability-identifier-naming)

extern "C" int dlclose(void * /*handle*/) {
    return 0;
}

extern "C" const char *
__lsan_default_suppressions() { // NOLINT(*-reserved-identifier,cert-*,readability-identifier-naming)
    // Fontconfig's default configuration: 288 bytes, once, however often it is asked for a font.
    // Qt's plugin for Wayland: 16 objects of the protocol's that it keeps to the end.
    return "leak:_dri.so\nleak:libfontconfig.so\nleak:libQt6WaylandClient.so\n";
}
