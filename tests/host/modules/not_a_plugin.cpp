// A library without a plug-in's entry.

extern "C" __attribute__((visibility("default"))) int NotAPlugin() { return 1; }
