// ThreadSanitizer cannot see how Cyclone DDS synchronises inside its own
// (uninstrumented) library, and reports its internal accesses (frees, copies,
// socket reads on its threads) as races. Tests of the DDS driver built with
// -fsanitize=thread ignore reports that happen inside libddsc; races in our own
// code still show, since our threads never run inside Cyclone callbacks.
#if defined(__SANITIZE_THREAD__)
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "called_from_lib:libddsc\n"
           "race:libddsc\n";
}
#endif
