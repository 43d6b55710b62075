#ifndef AUTOOLS_TESTS_REGISTRY_REGISTRYTESTS_H
#define AUTOOLS_TESTS_REGISTRY_REGISTRYTESTS_H

#include "platform/UniqueResource.h"
#include "registry/CRegBase.h"
#include "tests/support/ClientRegistry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace auttest
{
/// The client's key as users write it, followed by a subkey.
inline std::string clientKey(const std::string& subkey = {})
{
    return std::string("Software\\Velmora\\7xAutoUpdate") + (subkey.empty() ? "" : "\\") + subkey;
}

/// A subkey whose whole path below the root has `length` characters (at least 32, at most 285).
inline std::string subkeyForPathOf(std::size_t length) { return std::string(length - clientKey().size() - 1, 'x'); }

/// Creates a key from its parent, so that only the name needs to fit what the 8-bit functions take, not the path.
inline void createSubkey(const Registry& registry, const std::string& parent, const std::string& name)
{
    registry.createKey(parent);
    HKEY opened = nullptr;
    HKEY created = nullptr;
    ::RegOpenKeyExA(HKEY_LOCAL_MACHINE, clientKey(parent).c_str(), 0, KEY_ALL_ACCESS | KEY_WOW64_64KEY, &opened);
    const aut::UniqueKey parentKey(opened);
    EXPECT_EQ(ERROR_SUCCESS, ::RegCreateKeyExA(opened, name.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                               KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &created, nullptr));
    const aut::UniqueKey subkey(created);
}

using StringList = RT_List<String, String&>;

inline std::vector<std::string> textsOf(const StringList& list)
{
    std::vector<std::string> texts;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;)
        texts.emplace_back(list.GetNext(pos));
    return texts;
}

inline void fill(StringList& list, const std::vector<std::string>& texts)
{
    list.RemoveAll();
    for (const std::string& text : texts)
    {
        String copy(text.c_str());
        list.AddTail(copy);
    }
}

/// One text accessor of a key class; `set` is null for one that is only read.
template <typename Key> struct TextAccessor
{
    const char* name;
    const char* (Key::*get)();
    void (Key::*set)(const char*);
};

/// One flag accessor.
template <typename Key> struct FlagAccessor
{
    const char* name;
    bool (Key::*get)();
    void (Key::*set)(bool);
};

/// What holds for every text accessor: its value's name and type, "" when missing, 259 characters at most.
/// `key` is open for writing on the subkey `at` of the client's tree.
template <typename Key>
void expectTextAccessors(Key& key, const Registry& registry, const std::string& at,
                         const std::vector<TextAccessor<Key>>& accessors)
{
    for (const TextAccessor<Key>& accessor : accessors)
    {
        SCOPED_TRACE(accessor.name);
        registry.removeValue(at, accessor.name);
        EXPECT_STREQ("", (key.*accessor.get)());

        registry.write(at, accessor.name, std::string("of ") + accessor.name);
        EXPECT_EQ(std::string("of ") + accessor.name, (key.*accessor.get)());
        registry.write(at, accessor.name, std::string(259, 'x'));
        EXPECT_EQ(std::string(259, 'x'), (key.*accessor.get)());
        registry.write(at, accessor.name, std::string(260, 'x'));
        EXPECT_STREQ("", (key.*accessor.get)());

        if (accessor.set == nullptr)
            continue;
        (key.*accessor.set)("written");
        EXPECT_EQ("written", registry.readText(at, accessor.name));
        EXPECT_STREQ("written", (key.*accessor.get)());
        (key.*accessor.set)(nullptr);
        EXPECT_EQ("", registry.readText(at, accessor.name));
    }
}

/// What holds for every flag accessor: false when missing or 0, true for any other number, written as 1 or 0.
template <typename Key>
void expectFlagAccessors(Key& key, const Registry& registry, const std::string& at,
                         const std::vector<FlagAccessor<Key>>& accessors)
{
    for (const FlagAccessor<Key>& accessor : accessors)
    {
        SCOPED_TRACE(accessor.name);
        registry.removeValue(at, accessor.name);
        EXPECT_FALSE((key.*accessor.get)());
        registry.write(at, accessor.name, DWORD{0});
        EXPECT_FALSE((key.*accessor.get)());
        registry.write(at, accessor.name, DWORD{256});
        EXPECT_TRUE((key.*accessor.get)());

        (key.*accessor.set)(true);
        EXPECT_EQ(1u, registry.readNumber(at, accessor.name));
        EXPECT_TRUE((key.*accessor.get)());
        (key.*accessor.set)(false);
        EXPECT_EQ(0u, registry.readNumber(at, accessor.name));
        EXPECT_FALSE((key.*accessor.get)());
    }
}

/// What holds for every key class: read-only it neither creates nor opens a missing key, else it creates it at `at`.
template <typename Make> void expectKeyAt(const Registry& registry, const std::string& at, Make make)
{
    registry.removeKey("");
    make(true);
    EXPECT_FALSE(registry.keyExists(at));
    make(false);
    EXPECT_TRUE(registry.keyExists(at));
}
} // namespace auttest

#endif
