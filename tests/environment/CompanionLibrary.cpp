// A library to be loaded. The tests copy it to where it is looked for.

extern "C" __declspec(dllexport) int companionAnswer() { return 7; }
