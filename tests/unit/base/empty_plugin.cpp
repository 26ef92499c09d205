// A loadable library that registers nothing: not a DFX plug-in.
extern "C" __attribute__((visibility("default"))) int OrxEmptyPluginMarker() {
    return 0;
}
