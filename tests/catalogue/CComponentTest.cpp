#include "catalogue/CComponent.h"
#include "tests/catalogue/Attachment.h"
#include "tests/catalogue/StreamFile.h"

#include <gtest/gtest.h>

using auttest::Attachment;
using auttest::lines;
using auttest::StreamFile;

namespace
{
class ComponentProbe : public CComponent
{
public:
    using CComponent::CComponent;
    using CComponent::m_attachment;
    using CComponent::m_enabled;
    using CComponent::m_mapFile;
    using CComponent::m_reserved;
};

TEST(CComponent, ADefaultComponentIsEmptyAndEnabled)
{
    const ComponentProbe component;
    EXPECT_EQ(0, component.GetId());
    EXPECT_STREQ("", component.GetName());
    EXPECT_STREQ("", component.GetFullVersion());
    EXPECT_STREQ("", component.GetSourceLocation());
    EXPECT_EQ(0, component.GetAction());
    EXPECT_EQ(1, component.IsEnabled());
    EXPECT_EQ(0, component.IsShared());
    EXPECT_EQ(0u, component.m_mapFile);
    EXPECT_EQ(nullptr, component.m_attachment);
    EXPECT_EQ(0, component.m_reserved);
}

TEST(CComponent, TheValueConstructorTakesTheSourceLocation)
{
    const CComponent component(5, "comp", "1.0", "B2", "EN", 1, "http://host/a b");
    EXPECT_EQ(5, component.GetId());
    EXPECT_STREQ("comp", component.GetName());
    EXPECT_STREQ("1.0B2_EN", component.GetFullVersion());
    EXPECT_EQ(1, component.GetAction());
    EXPECT_EQ(1, component.IsEnabled());
    EXPECT_STREQ("http://host/a b", component.GetSourceLocation());
    EXPECT_STREQ("", CComponent(5, "comp", "1.0", "B2", "EN", 1, nullptr).GetSourceLocation());
}

TEST(CComponent, InitValuesEnablesAndClearsReservedWordAndStatus)
{
    ComponentProbe component(5, "comp", "1.0", "B2", "EN", 1, "there");
    component.SetShared(1);
    for (const bool byWord : {false, true})
    {
        component.m_enabled = 0;
        component.m_reserved = 9;
        component.SetUpdateStatus(9);
        if (byWord)
            component.InitValues(6, "other", "2.0", "", "", "Remove", "here");
        else
            component.InitValues(6, "other", "2.0", "", "", 1, "here");
        EXPECT_EQ(6, component.GetId());
        EXPECT_STREQ("other", component.GetName());
        EXPECT_STREQ("2.0", component.GetFullVersion());
        EXPECT_EQ(1, component.GetAction());
        EXPECT_EQ(1, component.IsEnabled());
        EXPECT_EQ(0, component.m_reserved);
        EXPECT_EQ(0, component.GetUpdateStatus());
        EXPECT_STREQ("here", component.GetSourceLocation());
        EXPECT_EQ(1, component.IsShared());
    }
}

TEST(CComponent, ANullSourceLocationKeepsThePreviousOne)
{
    CComponent component(5, "comp", "1.0", "B2", "EN", 1, "there");
    component.InitValues(6, "comp", "1.0", "B2", "EN", 1, nullptr);
    EXPECT_STREQ("there", component.GetSourceLocation());
    component.InitValues(6, "comp", "1.0", "B2", "EN", "INSTALL", nullptr);
    EXPECT_STREQ("there", component.GetSourceLocation());
    component.InitValues(6, "comp", "1.0", "B2", "EN", 1, "");
    EXPECT_STREQ("", component.GetSourceLocation());
    component.InitValues(6, "comp", "1.0", "B2", "EN", 1, std::string(10'000, 'x').c_str());
    EXPECT_EQ(std::string(259, 'x'), component.GetSourceLocation());
}

TEST(CComponent, AnUnknownActionWordKeepsTheAction)
{
    CComponent component(5, "comp", "1.0", "B2", "EN", 2, "there");
    component.InitValues(5, "comp", "1.0", "B2", "EN", "", "there");
    EXPECT_EQ(2, component.GetAction());
}

TEST(CComponent, ACopyIsEnabledWithoutStatusAndWithoutMapFile)
{
    int deleted = 0;
    ComponentProbe source(5, "comp", "1.0", "B2", "EN", 2, "there");
    source.m_enabled = 0;
    source.m_reserved = 9;
    source.SetUpdateStatus(9);
    source.SetShared(7);
    source.m_attachment = new Attachment(deleted);
    {
        const ComponentProbe copy(source);
        EXPECT_EQ(5, copy.GetId());
        EXPECT_STREQ("comp", copy.GetName());
        EXPECT_STREQ("1.0B2_EN", copy.GetFullVersion());
        EXPECT_EQ(2, copy.GetAction());
        EXPECT_STREQ("there", copy.GetSourceLocation());
        EXPECT_EQ(1, copy.IsEnabled());
        EXPECT_EQ(0, copy.GetUpdateStatus());
        EXPECT_EQ(1, copy.IsShared()); // as 0 or 1
        EXPECT_EQ(9, copy.m_reserved);
        EXPECT_EQ(0u, copy.m_mapFile);
        EXPECT_EQ(nullptr, copy.m_attachment);
    }
    EXPECT_EQ(0, deleted);
    EXPECT_EQ(7, source.IsShared());
    source.SetShared(0);
    EXPECT_EQ(0, ComponentProbe(source).IsShared());
}

TEST(CComponent, AssignmentKeepsTheTargetsSharedFlagAndMapFile)
{
    int deleted = 0;
    {
        ComponentProbe source(5, "comp", "1.0", "B2", "EN", 2, "there");
        source.m_enabled = 0;
        source.m_reserved = 9;
        source.SetUpdateStatus(9);
        ComponentProbe target(6, "other", "2.0", "B3", "FR", 1, "here");
        target.SetShared(3);
        target.m_enabled = 0;
        target.m_attachment = new Attachment(deleted);
        source.m_mapFile = 4; // never released: no library knows these two
        target.m_mapFile = 5;
        target = source;
        EXPECT_EQ(5, target.GetId());
        EXPECT_STREQ("comp", target.GetName());
        EXPECT_STREQ("1.0B2_EN", target.GetFullVersion());
        EXPECT_EQ(2, target.GetAction());
        EXPECT_STREQ("there", target.GetSourceLocation());
        EXPECT_EQ(1, target.IsEnabled());
        EXPECT_EQ(0, target.GetUpdateStatus());
        EXPECT_EQ(9, target.m_reserved);
        EXPECT_EQ(3, target.IsShared());
        EXPECT_NE(nullptr, target.m_attachment);
        EXPECT_EQ(5u, target.m_mapFile);
        EXPECT_EQ(4u, source.m_mapFile);
        EXPECT_EQ(0, deleted);
        source.m_mapFile = 0;
        target.m_mapFile = 0;
    }
    EXPECT_EQ(1, deleted);
}

TEST(CComponent, AssignmentToItselfKeepsItsValues)
{
    ComponentProbe component(5, "comp", "1.0", "B2", "EN", 2, "there");
    component.m_reserved = 9;
    const ComponentProbe& same = component;
    component = same;
    EXPECT_STREQ("comp", component.GetName());
    EXPECT_STREQ("1.0B2_EN", component.GetFullVersion());
    EXPECT_STREQ("there", component.GetSourceLocation());
    EXPECT_EQ(9, component.m_reserved);
}

// ---- The record

TEST(CComponentRecord, IsTheObjectsRecordWithLocationAndSharedFlag)
{
    CComponent component(5, "comp", "1.0", "B2", "EN", 2, "http://host/a b");
    component.SetShared(1);
    EXPECT_EQ("2\nB2\n5\nEN\ncomp\n1.0\n1\nhttp://host/a%20b\n1\n", StreamFile().write(component));
    CComponent read;
    EXPECT_EQ(1, StreamFile().read(read, "2\nB2\n5\nEN\ncomp\n1.0\n1\nhttp://host/a%20b\n1\n"));
    EXPECT_EQ(2, read.GetAction());
    EXPECT_EQ(5, read.GetId());
    EXPECT_STREQ("comp", read.GetName());
    EXPECT_STREQ("1.0B2_EN", read.GetFullVersion());
    EXPECT_STREQ("http://host/a b", read.GetSourceLocation());
    EXPECT_EQ(1, read.IsShared());
}

TEST(CComponentRecord, AnEmptyLocationIsATilde)
{
    CComponent component(5, "comp", "1.0", "B2", "EN", 2, "");
    EXPECT_EQ("2\nB2\n5\nEN\ncomp\n1.0\n1\n~\n0\n", StreamFile().write(component));
    CComponent read(1, "n", "v", "b", "l", 0, "old");
    EXPECT_EQ(1, StreamFile().read(read, "2\nB2\n5\nEN\ncomp\n1.0\n1\n~\n0\n"));
    EXPECT_STREQ("", read.GetSourceLocation());
}

TEST(CComponentRecord, EveryLocationThatFitsTheFieldReadsBack)
{
    const std::string blanks(259, ' ');
    CComponent component(5, "comp", "1.0", "B2", "EN", 2, blanks.c_str());
    const std::string bytes = StreamFile().write(component);
    CComponent read;
    EXPECT_EQ(1, StreamFile().read(read, bytes));
    EXPECT_EQ(blanks, read.GetSourceLocation());
}

TEST(CComponentRecord, WhatIsNoRecordFails)
{
    const std::string base = "2\nB2\n5\nEN\ncomp\n1.0\n1\n";
    const StreamFile file;
    for (const std::string& rest :
         {std::string(260, 'x') + "\n1\n", std::string(1'000'000, 'x') + "\n1\n", std::string("there\nyes\n"),
          std::string("there\n99999999999\n"),
          // The last number, with nothing behind it.
          std::string("there\n-"), std::string("there\nx"), std::string("there\n99999999999")})
    {
        CComponent read(1, "n", "v", "b", "l", 0, "old");
        read.SetShared(5);
        EXPECT_EQ(0, file.read(read, base + rest)) << rest.substr(0, 40);
        EXPECT_EQ(5, read.IsShared());
    }
}

TEST(CComponentRecord, ARecordCutOffFailsUntilItsLocationIsKnownToBeWhole)
{
    const StreamFile file;
    const std::string record = "2\nB2\n5\nEN\ncomp\n1.0\n1\nthere\n1\n";
    const std::size_t locationEnd = record.find("there") + 5;
    for (std::size_t length = 0; length <= record.size(); ++length)
    {
        CComponent read;
        EXPECT_EQ(length > locationEnd ? 1 : 0, file.read(read, record.substr(0, length))) << length;
        EXPECT_EQ(length > locationEnd + 1 ? 1 : 0, read.IsShared()) << length;
    }
}

TEST(CComponentRecord, WritingToAStreamThatIsNotOpenFails)
{
    CComponent component(5, "comp", "1.0", "B2", "EN", 2, "there");
    std::ofstream unopened;
    EXPECT_EQ(0, component.Serialize(unopened));
}
} // namespace
