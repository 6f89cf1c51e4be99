// Leaks that are not ours, for programs built with AddressSanitizer:
//   - fonts that were looked up stay in the caches of the font library;
//   - with LOCPATH set, newlocale() keeps the joined path for good, and a library behind the
//     server's client calls it when it is loaded;
//   - the windowing library keeps the character sets that it loads for the locale.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();

const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\n"
           "leak:__argz_add_sep\n"
           "leak:libX11.so\n";
}
