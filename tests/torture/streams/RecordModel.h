#ifndef AUTOOLS_TORTURE_RECORDMODEL_H
#define AUTOOLS_TORTURE_RECORDMODEL_H

#include "catalogue/CRelease.h"

#include <cstdint>
#include <string>
#include <vector>

namespace torture
{
// What the rules of the stream records make of a text, written from the rules alone: a tape is read word by word. White
// space of any kind separates words. The end of the tape is met by reading up to it. Tested for it are the places that
// the format names; a number behind the end keeps its value. A word where a number stands, a number outside of its type
// and a word longer than the format allows break the tape, and a record that meets a broken tape fails.

class Tape
{
public:
    explicit Tape(const std::string& text) : m_text(text) {}

    bool ended() const { return m_ended; }
    bool broken() const { return m_broken; }
    bool readable() const { return !m_ended && !m_broken; }

    std::string word(std::size_t mostChars);
    void number(std::int64_t least, std::int64_t most, std::int64_t& value);
    void integer(std::int64_t& value) { number(INT32_MIN, INT32_MAX, value); }
    void skipBlanks();

private:
    const std::string& m_text;
    std::size_t m_at = 0;
    bool m_ended = false;
    bool m_broken = false;
};

struct ObjectModel
{
    std::int64_t action = 0;
    std::int64_t id = 0;
    std::int64_t enabled = 0;
    std::string build;
    std::string language;
    std::string name;
    std::string version;

    std::string fullVersion() const;
    bool read(Tape& tape);
    std::string written() const;
};

struct ComponentModel : ObjectModel
{
    std::string location;
    std::int64_t shared = 0;

    bool read(Tape& tape);
    std::string written() const;
};

struct ReleaseModel : ObjectModel
{
    std::int64_t date = 0;
    std::int64_t noDownload = 0;
    std::int64_t preInstallOnly = 0;
    std::string certificateId;
    std::string marketingName;
    std::string technicalName;
    std::vector<ComponentModel> components;
    int componentsMade = 0; ///< how many a reader had to make, the one that failed included
    std::string event;      ///< what is logged

    /// The record's answer.
    int read(const std::string& text);
    std::string written() const;

private:
    bool readOwn(Tape& tape, std::int64_t& count);
};

/// All of a record as one text, for a comparison of what was read.
std::string told(const ReleaseModel& model);
std::string told(const CRelease& release);
} // namespace torture

#endif
