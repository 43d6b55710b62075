#include "registry/CRegProduct.h"

#include "tests/registry/RegistryTests.h"

#include <algorithm>

using auttest::ClientRegistry;
using Key = CRegProduct;

namespace
{
constexpr char kProduct[] = "Products\\Product";

const std::vector<auttest::TextAccessor<Key>> kTexts = {
    {"Version", &Key::GetVersion, &Key::SetVersion},
    {"Path", &Key::GetPath, &Key::SetPath},
    {"Language", &Key::GetLanguage, &Key::SetLanguage},
    {"ActiveLanguage", &Key::GetActiveLanguage, &Key::SetActiveLanguage},
    {"CertificateID", &Key::GetCertificateID, &Key::SetCertificateID},
    {"Components", &Key::GetComponentList, &Key::SetComponentList},
    {"MarketingName", &Key::GetMarketingName, &Key::SetMarketingName},
    {"TechnicalName", &Key::GetTechnicalName, &Key::SetTechnicalName}};
} // namespace

TEST(CRegProduct, OpensTheKeyOfTheProducts)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, "Products", [](bool readOnly) { CRegProduct{readOnly}; });
    auttest::expectKeyAt(registry, "Products", [](bool readOnly) { CRegProduct{"", readOnly}; });
    auttest::expectKeyAt(registry, "Products", [](bool readOnly) { CRegProduct{nullptr, readOnly}; });
}

TEST(CRegProduct, OpensTheKeyOfOneProduct)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, kProduct, [](bool readOnly) { CRegProduct{"Product", readOnly}; });
}

TEST(CRegProduct, ReadsAndWritesItsTexts)
{
    const ClientRegistry registry;
    CRegProduct key("Product", false);
    auttest::expectTextAccessors<Key>(key, registry, kProduct, kTexts);
}

TEST(CRegProduct, IsEnabledAndDisabled)
{
    const ClientRegistry registry;
    CRegProduct key("Product", false);
    EXPECT_FALSE(key.IsEnabled());
    key.Enable();
    EXPECT_EQ(1u, registry.readNumber(kProduct, "Enable"));
    EXPECT_TRUE(key.IsEnabled());
    key.Disable();
    EXPECT_EQ(0u, registry.readNumber(kProduct, "Enable"));
    EXPECT_FALSE(key.IsEnabled());
}

TEST(CRegProduct, OnTheRootNothingIsReadOrWrittenButTheVersion)
{
    const ClientRegistry registry;
    CRegProduct root(false);
    for (const auto& text : kTexts)
    {
        registry.write("Products", text.name, "stored");
        EXPECT_STREQ("", (root.*text.get)()) << text.name;
        (root.*text.set)("written");
        EXPECT_EQ(std::string(text.name) == "Version" ? "written" : "stored", registry.readText("Products", text.name));
    }
    registry.write("Products", "Enable", 1u);
    EXPECT_FALSE(root.IsEnabled());
    root.Disable();
    EXPECT_EQ(1u, registry.readNumber("Products", "Enable"));
    registry.write("Products", "Enable", DWORD{0});
    root.Enable();
    EXPECT_EQ(0u, registry.readNumber("Products", "Enable"));
    char version[260] = "before";
    char build[260] = "before";
    root.GetBuildAndVersion(version, build);
    EXPECT_STREQ("", version);
    EXPECT_STREQ("", build);
}

TEST(CRegProduct, SplitsItsVersionAtTheFirstBuildLetter)
{
    const ClientRegistry registry;
    CRegProduct key("Product", false);
    const struct
    {
        const char* text;
        const char* version;
        const char* build;
    } cases[] = {{"3.3.302B1", "3.3.302", "B1"}, {"1.0A2", "1.0", "A2"},     {"1.0P3", "1.0", "P3"},
                 {"1.0b1", "1.0", "b1"},         {"1.0a", "1.0", "a"},       {"1.0p", "1.0", "p"},
                 {"1.0B1A2", "1.0", "B1A2"},     {"1.0", "1.0", ""},         {"B1", "", "B1"},
                 {"1.0C1", "1.0C1", ""},         {"1.0_ENP", "1.0_EN", "P"}, {"", "", ""}};
    for (const auto& row : cases)
    {
        char version[260] = "before";
        char build[260] = "before";
        registry.write(kProduct, "Version", row.text);
        key.GetBuildAndVersion(version, build);
        EXPECT_STREQ(row.version, version) << row.text;
        EXPECT_STREQ(row.build, build) << row.text;
    }
}

TEST(CRegProduct, SplitsAVersionOf259Characters)
{
    const ClientRegistry registry;
    CRegProduct key("Product", false);
    char version[260];
    char build[260];
    registry.write(kProduct, "Version", std::string(259, '1'));
    key.GetBuildAndVersion(version, build);
    EXPECT_EQ(std::string(259, '1'), version);
    EXPECT_STREQ("", build);
    registry.write(kProduct, "Version", std::string(259, 'B'));
    key.GetBuildAndVersion(version, build);
    EXPECT_STREQ("", version);
    EXPECT_EQ(std::string(259, 'B'), build);
    key.GetBuildAndVersion(nullptr, nullptr); // skipped
}

TEST(CRegProduct, ListsTheProductsFromRootAndProduct)
{
    const ClientRegistry registry;
    registry.createKey("Products\\A\\Deeper");
    registry.createKey("Products\\B");
    CRegProduct root(true);
    CRegProduct product("A", true);
    for (CRegProduct* key : {&root, &product})
    {
        auttest::StringList list;
        auttest::fill(list, {"before"});
        EXPECT_TRUE(key->GetProductList(list));
        std::vector<std::string> names = auttest::textsOf(list);
        std::sort(names.begin(), names.end());
        EXPECT_EQ((std::vector<std::string>{"A", "B"}), names);
    }
}

TEST(CRegProduct, ListsNothingWithoutTheKey)
{
    const ClientRegistry registry;
    auttest::StringList list;
    EXPECT_FALSE(CRegProduct(true).GetProductList(list));
    // One product asks an object that may write, which makes the key.
    EXPECT_TRUE(CRegProduct("A", true).GetProductList(list));
    EXPECT_TRUE(registry.keyExists("Products"));
    EXPECT_FALSE(registry.keyExists("Products\\A"));
}

TEST(CRegProduct, ANameThatDoesNotFitTheRegistryOpensNothing)
{
    const ClientRegistry registry;
    CRegProduct key(std::string(10000, 'x').c_str(), false);
    key.SetVersion("1.0");
    key.SetPath("C:\\");
    EXPECT_STREQ("", key.GetVersion());
    EXPECT_FALSE(registry.keyExists("Products"));
}
