// A library of nothing but one function: a file that version resources are given to, and one that has none.
extern "C" __declspec(dllexport) int blank()
{
    return 0;
}
