// A library that is only there to be loaded.
extern "C" __declspec(dllexport) int autoolsTestModule();
extern "C" int autoolsTestModule() { return 1; }
