// ThreadSanitizer cannot see how Cyclone DDS synchronises inside its own
// (uninstrumented) library, and reports the frees, copies and socket reads that
// libddsc makes on its threads as races. Tests of the DDS driver built with
// -fsanitize=thread ignore the reports of calls made from inside libddsc;
// accesses made by our own code, also in Cyclone's listener callbacks, are
// still checked.
#if defined(__SANITIZE_THREAD__)
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "called_from_lib:libddsc\n";
}
#endif
