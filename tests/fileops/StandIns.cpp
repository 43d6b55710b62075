#include "tests/fileops/StandIns.h"

#include "foundation/RT_RESULT.h"

#include <sstream>

namespace auttest
{
namespace
{
std::vector<Spawned> g_spawned;
std::intptr_t g_outcome = 0;

std::intptr_t __cdecl recordSpawn(int mode, const char* program, const char* const* arguments)
{
    Spawned spawned{mode, program, {}, currentDirectory()};
    for (; *arguments != nullptr; ++arguments)
        spawned.arguments.emplace_back(*arguments);
    g_spawned.push_back(spawned);
    return g_outcome;
}

std::string standInPath(const char* name)
{
    char path[MAX_PATH];
    const std::string program(path, ::GetModuleFileNameA(nullptr, path, sizeof path));
    return program.substr(0, program.rfind('\\')) + "\\fileprograms\\" + name;
}
} // namespace

EnvironmentVariable::EnvironmentVariable(const char* name, const char* value)
    : m_name(name), m_before(read(name)), m_wasThere(::GetEnvironmentVariableA(name, nullptr, 0) != 0)
{
    EXPECT_TRUE(::SetEnvironmentVariableA(name, value) || value == nullptr);
}

EnvironmentVariable::~EnvironmentVariable()
{
    ::SetEnvironmentVariableA(m_name.c_str(), m_wasThere ? m_before.c_str() : nullptr);
}

std::string EnvironmentVariable::read(const char* name)
{
    std::string value(32768, '\0');
    value.resize(::GetEnvironmentVariableA(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

std::string Spawned::commandLine() const
{
    std::string line;
    for (const std::string& argument : arguments)
        line += (line.empty() ? "" : " ") + argument;
    return line;
}

SpawnRecorder::SpawnRecorder(std::intptr_t outcome) : m_patch("_spawnv", &recordSpawn)
{
    g_spawned.clear();
    g_outcome = outcome;
}

const std::vector<Spawned>& SpawnRecorder::all() const { return g_spawned; }

Spawned SpawnRecorder::only() const
{
    EXPECT_EQ(1U, g_spawned.size());
    return g_spawned.empty() ? Spawned() : g_spawned.back();
}

StandInTest::StandInTest() : m_record("AUTTEST_RECORD", (m_folder / "record.txt").c_str())
{
    wchar_t directory[MAX_PATH];
    m_directory.assign(directory, ::GetCurrentDirectoryW(MAX_PATH, directory));
}

StandInTest::~StandInTest() { ::SetCurrentDirectoryW(m_directory.c_str()); }

std::string StandInTest::copy(const char* standIn, const std::string& name) const
{
    return m_folder.writeFile(name, readFile(standInPath(standIn)));
}

std::vector<std::string> StandInTest::recorded() const
{
    std::vector<std::string> lines;
    if (!m_folder.exists("record.txt"))
        return lines;
    std::istringstream text(m_folder.readFile("record.txt"));
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

void StandInTest::forget() const { ::DeleteFileA((m_folder / "record.txt").c_str()); }

std::string shortPath(const std::string& path)
{
    char text[MAX_PATH];
    return std::string(text, ::GetShortPathNameA(path.c_str(), text, sizeof text));
}

std::string longPath(const std::string& path)
{
    char text[MAX_PATH];
    const DWORD length = ::GetLongPathNameA(path.c_str(), text, sizeof text);
    return length != 0 && length < sizeof text ? std::string(text, length) : path;
}

std::string currentDirectory()
{
    char text[MAX_PATH];
    return std::string(text, ::GetCurrentDirectoryA(sizeof text, text));
}

std::string systemDirectory()
{
    char text[MAX_PATH];
    return std::string(text, ::GetSystemDirectoryA(text, sizeof text));
}

void spoilResult()
{
    *result = RT_RESULT(7);
    result->Set(50, "old action", "old function", "old argument 1", "old argument 2", 5L, "old object");
}

bool wasRecorded()
{
    return recordedResult() != "0,50,5,7,old action,old object,old function,old argument 1,old argument 2";
}

std::string recordedResult() { return static_cast<const char*>(result->GetErrorString()); }
} // namespace auttest
