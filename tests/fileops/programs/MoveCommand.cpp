// Stands in for Move.exe, which the emulator lacks: "Move.exe /Y <source> <target>", both without blanks.
#include <windows.h>

#include <cstring>

int main(int argc, char** argv)
{
    if (argc != 4 || std::strcmp(argv[1], "/Y") != 0)
        return 1;
    return ::MoveFileExA(argv[2], argv[3], MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED) ? 0 : 2;
}
