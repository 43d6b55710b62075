#include "foundation/LogEnvironment.h"

#include "foundation/LogText.h"
#include "registry/CRegAutoUpdate.h"
#include "system/COperatingSystem.h"

namespace aut
{
namespace
{
/// These texts come from the registry, so they are escaped like messages: the log must stay well formed.
std::string escaped(const char* text)
{
    char out[6 * 512]; // the longest text, about 400 characters, with six for each
    escapeXml(out, text);
    return out;
}

std::string operatingSystemText()
{
    COperatingSystem* const system = COperatingSystem::GetInstance();
    String version;
    String servicePack;
    const COperatingSystem::OS value = system->GetOSValue(version, servicePack);
    String text;
    text.Format("%s %s %s", static_cast<const char*>(system->OSValueToString(value)), static_cast<const char*>(version),
                static_cast<const char*>(servicePack));
    return escaped(text);
}

std::string browserVersion()
{
    CRegBase browser("Software\\Microsoft\\Internet Explorer", true);
    char version[MAX_PATH] = "";
    browser.QueryValue("Version", version);
    return escaped(version);
}
} // namespace

std::string logEnvironmentBlock()
{
    const std::string client = escaped(CRegAutoUpdate(true).GetKernelVersion());
    return "<Environment>\n<AUVersion>" + client + "</AUVersion>\n<OS>" + operatingSystemText() + "</OS>\n<IE>" +
           browserVersion() + "</IE>\n</Environment>\n";
}
} // namespace aut
