#include "plan/ProductList.h"

#include "machine/Text.h"
#include "machine/Xml.h"

#include <7xAutoUpdateTools.h>

#include <algorithm>
#include <cstdlib>
#include <map>

namespace autool
{
namespace
{
constexpr std::size_t kTextSize = 260;

/// The texts of an element's children, the first one of each name.
using Texts = std::map<std::wstring, std::string>;

Texts textsOf(const XmlNode& element, std::vector<XmlNode>* lists = nullptr)
{
    Texts texts;
    eachChild(element,
              [&](const std::wstring& name, const XmlNode& child)
              {
                  if (name == L"ComponentList")
                  {
                      if (lists != nullptr)
                          lists->push_back(child);
                  }
                  else if (texts.find(name) == texts.end())
                      texts[name] = textOf(child);
                  return true;
              });
    return texts;
}

long toId(const std::string& text) { return static_cast<long>(std::strtoul(text.c_str(), nullptr, 10)); }
bool isTrue(const std::string& text) { return isSameText(text, "TRUE"); }

int toAction(const std::string& word)
{
    const char* const words[] = {"INSTALL", "REMOVE", "FORCEREINSTALL", "DISABLE"};
    for (int action = 0; action < 4; ++action)
        if (isSameText(word, words[action]))
            return action;
    return kInstall; // an unknown word keeps what a new record has
}

template <typename Record> void fill(Record& record, Texts& texts)
{
    const AutoUpdateObject object(0, texts[L"Name"].c_str(), texts[L"Version"].c_str(), texts[L"Build"].c_str(),
                                  texts[L"Language"].c_str(), toAction(texts[L"Action"])); // cuts the texts
    record.name = object.GetName();
    record.version = object.GetVersion();
    record.build = object.GetBuild();
    record.language = object.GetLanguage();
    record.fullVersion = object.GetFullVersion();
    record.action = object.GetAction();
}

AskedComponent componentOf(const XmlNode& element)
{
    Texts texts = textsOf(element);
    AskedComponent component;
    fill(component, texts);
    component.id = toId(texts[L"ComponentReleaseID"]);
    component.shared = isTrue(texts[L"Shared"]);
    component.location = texts[L"URL"].substr(0, kTextSize - 1);
    return component;
}

/// Calls `visit` for every element at a path of names, in document order.
void eachAt(const XmlNode& node, const std::vector<std::wstring>& path, std::size_t depth,
            const std::function<void(const XmlNode&)>& visit)
{
    eachChild(node,
              [&](const std::wstring& name, const XmlNode& child)
              {
                  if (name != path[depth])
                      return true;
                  if (depth + 1 == path.size())
                      visit(child);
                  else
                      eachAt(child, path, depth + 1, visit);
                  return true;
              });
}

AskedRelease releaseOf(const XmlNode& element, const std::string& source)
{
    std::vector<XmlNode> lists;
    Texts texts = textsOf(element, &lists);
    AskedRelease release;
    fill(release, texts);
    release.id = toId(texts[L"ProductReleaseID"]);
    release.enabled = !isSameText(texts[L"Action"], "DISABLE");
    const std::string& startDate = texts[L"StartDate"];
    release.activationDate = startDate.empty() ? 0 : ConvertDate(startDate.c_str());
    release.noDownload = isTrue(texts[L"NoDownload"]);
    release.preInstallOnly = isTrue(texts[L"PreInstallOnly"]);
    release.marketingName = texts[L"MarketingName"];
    release.technicalName = texts[L"TechnicalName"];
    release.startHour = 0;
    release.endHour = 0; // no restriction
    release.source = source;
    for (const XmlNode& list : lists)
        eachChild(list,
                  [&](const std::wstring& name, const XmlNode& child)
                  {
                      if (name == L"Component")
                          release.components.push_back(componentOf(child));
                      return true;
                  });
    return release;
}
} // namespace

std::optional<std::vector<AskedRelease>> readProductList(const std::string& path, const std::function<void()>& progress,
                                                         std::string& why)
{
    const XmlDocument document = loadXml(path, why);
    const XmlNode root = rootOf(document);
    if (root == nullptr)
        return std::nullopt;
    if (elementAt(root, {L"Data", L"NewData"}) == nullptr)
    {
        why = elementAt(root, {L"Data", L"NoChange"}) != nullptr
                  ? "an answer that says \"no change\": it has no product list"
              : elementAt(root, {L"Status", L"Error"}) != nullptr
                  ? "an error answer of the server: " + textOf(elementAt(root, {L"Status", L"Error"}))
                  : "no product list: it has no element Data/NewData";
        return std::nullopt;
    }
    std::vector<AskedRelease> releases;
    eachAt(root, {L"Data", L"NewData", L"ProductList", L"Product"}, 0,
           [&](const XmlNode& product)
           {
               releases.push_back(releaseOf(product, path));
               progress();
           });
    return releases;
}
} // namespace autool
