// Texts from elsewhere are never a format.

#include "7xAutoUpdateTools.h"
#include "tests/support/LogFile.h"
#include "tests/torture/Figure.h"
#include "tests/torture/leaks/ClientInstallation.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include <string>
#include <vector>

namespace
{
std::string times(const char* text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

std::vector<std::string> hostileTexts()
{
    return {"%n",       "%n%n%n%n", times("%s", 50), "%999999d", "%.999999f",   "%*d%*.*s", "%hhn%lln",
            "%1$s%9$n", "%",        "%%%",           "%ls%ws%S", "%c%p%x%X%g%a"};
}

/// Whether an event of the log holds this very text.
bool isLogged(const auttest::LogFile& log, const std::string& text)
{
    for (const auttest::LogEvent& event : log.events())
        if (event.text.find(text) != std::string::npos)
            return true;
    return false;
}
} // namespace

// The action of a result is the one text that is used as a format.
TEST(Formats, TheActionOfAResultMayBeAnything)
{
    int survived = 0;
    const std::string longText(259, 'x');
    for (const std::string& text : hostileTexts())
    {
        RT_RESULT record;
        record.Set(7, text.c_str(), "function", longText.c_str(), longText.c_str(), longText.c_str());
        const std::string message = static_cast<const char*>(record.GetErrorMessage(text.c_str()));
        EXPECT_LE(message.size(), 4096u) << text;
        RT_RESULT system;
        system.Set(7, text.c_str(), text.c_str(), 5L, text.c_str());
        system.GetErrorMessage(text.c_str());
        system.GetErrorString();
        survived += message.size() <= 4096 ? 1 : 0;
    }
    torture::count("hostile formats that a result's message survives", survived,
                   static_cast<long long>(hostileTexts().size()));
}

TEST(Formats, WhatAServerSendsIsLoggedAsItIs)
{
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    long long same = 0;
    long long texts = 0;
    {
        const torture::ClientInstallation client;
        const std::string host = client.server().host();
        const auto answerWith = [&](const std::string& body)
        {
            webconf_sample::Rule rule;
            rule.answer.body = body;
            client.server().clearRules();
            client.server().addRule(rule);
        };
        for (const std::string& text : hostileTexts())
        {
            const auto expectLogged = [&](const char* what, const auttest::LogFile& log)
            {
                const bool is = isLogged(log, text);
                EXPECT_TRUE(is) << what << ": " << text;
                same += is ? 1 : 0;
                ++texts;
            };
            {
                const auttest::LogFile log;
                answerWith("<wcfgResponse><Status><Error>" + text + "</Error></Status></wcfgResponse>");
                DataCaching caching;
                caching.GetComponentData(host.c_str(), client.kCid, "Editor", "1.0", "B1", "EN", "comp");
                expectLogged("an error", log);
            }
            {
                const auttest::LogFile log;
                answerWith("<wcfgResponse><Data><TimeStamp>" + text + "</TimeStamp></Data></wcfgResponse>");
                DataCaching caching;
                caching.GetComponentData(host.c_str(), client.kCid, "Editor", "1.0", "B1", "EN", "comp");
                expectLogged("a time stamp", log);
            }
            {
                const auttest::LogFile log;
                answerWith("<r><Data><NewData><ProductList><Product><Name>..\\" + text +
                           "</Name></Product></ProductList></NewData></Data></r>");
                auto* list = new RT_List<CRelease*, CRelease*>;
                {
                    phase1xml document(client.server().url("list.asp").c_str());
                    EXPECT_EQ(1, document.GetXMLDoc(nullptr));
                    document.ParseXMLDocument(list, client.kCid);
                }
                FreeReleaseList(list);
                expectLogged("a product's name", log);
            }
            {
                const auttest::LogFile log;
                answerWith("<r><Status><Error><Kind><Business><AccessMissing><DBReason>" + text +
                           "</DBReason></AccessMissing></Business></Kind></Error></Status></r>");
                RT_List<CRelease*, CRelease*> none;
                phase1xml document(client.server().url("list.asp").c_str());
                EXPECT_EQ(1, document.GetXMLDoc(nullptr));
                document.IsNewConfiguration(&none, client.kCid);
                expectLogged("a reason", log);
            }
        }
    }
    torture::count("texts from a server that are logged as they are", same, texts);
    ::CoUninitialize();
}
