#ifndef AUTOOLS_TESTS_SUPPORT_CLIENTREGISTRY_H
#define AUTOOLS_TESTS_SUPPORT_CLIENTREGISTRY_H

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace auttest
{
/// One registry value as it is stored.
struct StoredValue
{
    DWORD type = REG_NONE;
    std::string bytes; ///< terminators included
};

/// The registry seen past our own classes: straight from Windows, always in the 64-bit view. `key` is a path below the
/// root. What is missing is made; what cannot be done fails the running test.
class Registry
{
public:
    explicit Registry(HKEY root = HKEY_LOCAL_MACHINE, std::string path = {}) : m_root(root), m_path(std::move(path)) {}

    void write(std::string_view key, const char* name, DWORD number) const;
    void write(std::string_view key, const char* name, std::string_view text) const;
    void write(std::string_view key, const char* name, const char* text) const
    {
        write(key, name, std::string_view(text));
    }
    /// Any type with any bytes: a text without terminator, a number of three bytes.
    void writeRaw(std::string_view key, const char* name, DWORD type, std::string_view bytes) const;
    void createKey(std::string_view key) const;

    std::optional<StoredValue> readRaw(std::string_view key, const char* name) const;
    /// Nothing when the value is missing or of another type.
    std::optional<DWORD> readNumber(std::string_view key, const char* name) const;
    /// A REG_SZ up to its first terminator; nothing when the value is missing or of another type.
    std::optional<std::string> readText(std::string_view key, const char* name) const;

    bool keyExists(std::string_view key) const;
    bool valueExists(std::string_view key, const char* name) const { return readRaw(key, name).has_value(); }
    /// The names below a key, in the order of the registry.
    std::vector<std::string> subkeys(std::string_view key) const;
    std::vector<std::string> valueNames(std::string_view key) const;

    void removeValue(std::string_view key, const char* name) const;
    /// With everything below it. One that is not there is fine.
    void removeKey(std::string_view key) const;

private:
    std::string full(std::string_view key) const;

    HKEY m_root;
    std::string m_path;
};

/// The client's own tree, HKLM "Software\Velmora\7xAutoUpdate": empty at the start of the test that holds one, and
/// again at its end. Keys are named below it: `registry.write("Config", "TestEnv", 2)`; "" is the tree's own key.
class ClientRegistry : public Registry
{
public:
    ClientRegistry();
    ~ClientRegistry();
    ClientRegistry(const ClientRegistry&) = delete;
    ClientRegistry& operator=(const ClientRegistry&) = delete;

    static constexpr const char* kPath = "Software\\Velmora\\7xAutoUpdate";
};
} // namespace auttest

#endif
