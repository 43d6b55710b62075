// A library that cannot be loaded without the other one.

extern "C" __declspec(dllimport) int companionAnswer();
extern "C" __declspec(dllexport) int askCompanion() { return companionAnswer(); }
