#include "state/RegistryState.h"

#include "common/Text.h"
#include "plan/Decision.h"
#include "state/KnownValues.h"

#include <algorithm>
#include <cstdio>

namespace autool
{
namespace
{
constexpr std::size_t kMaxBytesShown = 64;

std::string hexOf(const std::vector<BYTE>& bytes, const char* separator, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < std::min(count, bytes.size()); ++i)
    {
        char digits[8];
        std::snprintf(digits, sizeof digits, "%s%02x", i == 0 ? "" : separator, bytes[i]);
        text += digits;
    }
    return text;
}

std::string_view bytesOf(const RegistryValue& value)
{
    return {reinterpret_cast<const char*>(value.data.data()), value.data.size()};
}

std::string binaryText(const RegistryValue& value, const Secrets& secrets)
{
    if (secrets.appearIn(bytesOf(value)))
        return kHidden;
    const std::size_t size = value.data.size();
    return std::to_string(size) + (size == 1 ? " byte" : " bytes") + (size == 0 ? "" : ": ") +
           hexOf(value.data, " ", kMaxBytesShown) + (size > kMaxBytesShown ? " ..." : "");
}

std::wstring join(const std::wstring& path, const std::wstring& name)
{
    return path.empty() ? name : path + L"\\" + name;
}

void addKnownMissing(Json& values, const std::wstring& path, const RegistryKey* key)
{
    for (const KnownValue& known : knownValues())
        if (path == known.key && (key == nullptr || key->value(known.name) == nullptr))
            values[fromWide(known.name)] = {{"missing", true}, {"default", known.missing}};
}

void addKey(Json& tree, const RegistryKey& key, const std::wstring& path, const Secrets& secrets)
{
    Json values = Json::object();
    for (const RegistryValue& value : key.values)
    {
        const KnownValue* const known = knownValue(path, value.name);
        Json state = valueState(value, secrets, known != nullptr && known->isTime);
        if (known != nullptr && known->type != value.type)
            state["expected"] = typeName(known->type);
        values[value.name.empty() ? "(default)" : secrets.mask(fromWide(value.name))] = std::move(state);
    }
    addKnownMissing(values, path, &key);
    if (key.error != ERROR_SUCCESS)
        values["(error)"] = {{"value", "cannot be read whole, error " + std::to_string(key.error)}};
    tree[path.empty() ? "(client)" : secrets.mask(fromWide(path))] = std::move(values);
    for (const RegistryKey& child : key.keys)
        addKey(tree, child, join(path, child.name), secrets);
}

std::wstring quoted(const std::wstring& text)
{
    std::wstring escaped = L"\"";
    for (const wchar_t c : text)
    {
        if (c == L'"' || c == L'\\')
            escaped += L'\\';
        escaped += c;
    }
    return escaped + L'"';
}

void exportValue(std::wstring& out, const RegistryValue& value, const Secrets& secrets)
{
    if (Secrets::isSecretName(value.name))
    {
        out += L"; " + quoted(value.name) + L" is left out: a credential\r\n";
        return;
    }
    const std::wstring name = value.name.empty() ? L"@" : quoted(toWide(secrets.mask(fromWide(value.name))));
    const bool isPlainText = value.type == REG_SZ && value.text().find_first_of(L"\r\n") == std::wstring::npos;
    if (isPlainText)
        out += name + L"=" + quoted(toWide(secrets.mask(fromWide(value.text())))) + L"\r\n";
    else if (value.type == REG_DWORD && value.number())
    {
        wchar_t digits[16];
        std::swprintf(digits, std::size(digits), L"%08x", static_cast<unsigned>(*value.number()));
        out += name + L"=dword:" + digits + L"\r\n";
    }
    else if (secrets.appearIn(bytesOf(value)) || secrets.mask(fromWide(value.text())) != fromWide(value.text()))
        out += L"; " + name + L" is left out: it holds a credential\r\n";
    else
    {
        char type[16];
        std::snprintf(type, sizeof type, value.type == REG_BINARY ? "hex:" : "hex(%lx):", value.type);
        out += name + L"=" + toWide(type) + toWide(hexOf(value.data, ",", value.data.size())) + L"\r\n";
    }
}

void exportKey(std::wstring& out, const RegistryKey& key, const std::wstring& path, const Secrets& secrets)
{
    out += L"\r\n[HKEY_LOCAL_MACHINE\\" + toWide(secrets.mask(fromWide(path))) + L"]\r\n";
    for (const RegistryValue& value : key.values)
        exportValue(out, value, secrets);
    for (const RegistryKey& child : key.keys)
        exportKey(out, child, join(path, child.name), secrets);
}
} // namespace

Json valueState(const RegistryValue& value, const Secrets& secrets, bool isTime)
{
    Json state = {{"type", typeName(value.type)}};
    if (Secrets::isSecretName(value.name))
    {
        state["value"] = value.data.empty() ? "" : kHidden;
        return state;
    }
    const auto number = value.number();
    if (number)
    {
        state["value"] = value.type == REG_QWORD ? Json(static_cast<__int64>(*number)) : Json(*number);
        if (isTime)
            state["time"] = timeText(static_cast<__int64>(*number));
    }
    else if (value.type == REG_SZ || value.type == REG_EXPAND_SZ)
        state["value"] = secrets.mask(fromWide(value.text()));
    else if (value.type == REG_MULTI_SZ)
    {
        state["value"] = Json::array();
        for (const std::wstring& text : value.texts())
            state["value"].push_back(secrets.mask(fromWide(text)));
    }
    else
        state["value"] = binaryText(value, secrets);
    return state;
}

Json registryState(const RegistryKey& tree, const Secrets& secrets)
{
    Json state = Json::object();
    addKey(state, tree, L"", secrets);
    // Keys that are not there at all: their values have defaults too.
    for (const KnownValue& known : knownValues())
    {
        const std::string path = *known.key == L'\0' ? "(client)" : fromWide(known.key);
        const auto sameKey = [&](const auto& item) { return ::_stricmp(item.key().c_str(), path.c_str()) == 0; };
        bool isThere = false;
        for (const auto& item : state.items())
            isThere = isThere || sameKey(item);
        if (!isThere)
        {
            Json values = Json::object();
            addKnownMissing(values, known.key, nullptr);
            state[path] = std::move(values);
        }
    }
    return state;
}

std::string registryExport(const RegistryKey& tree, const Secrets& secrets)
{
    std::wstring out = L"\xfeffWindows Registry Editor Version 5.00\r\n"
                       L"\r\n; Credentials are left out or hidden.\r\n";
    exportKey(out, tree, kClientTree, secrets);
    return {reinterpret_cast<const char*>(out.data()), out.size() * sizeof(wchar_t)};
}
} // namespace autool
