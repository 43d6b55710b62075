#include "tests/torture/faults/Scenario.h"

#include "fileops/RT_File.h"
#include "platform/UniqueResource.h"

#include <windows.h>

#include <algorithm>

// Files and trees of files.

namespace faults
{
namespace
{
constexpr char kPendingKey[] = "System\\CurrentControlSet\\Control\\Session Manager";
constexpr char kPendingName[] = "PendingFileRenameOperations";
constexpr char kWaiting[] = "C:\\faults_0.tmp"; ///< the copy that waits for the next start of Windows

/// What Windows does with files at its next start: source, target, source, target, each ended by a bar.
std::string pendingMoves()
{
    const auto stored = auttest::Registry().readRaw(kPendingKey, kPendingName);
    std::string text = stored ? stored->bytes : std::string();
    std::replace(text.begin(), text.end(), '\0', '|');
    return text;
}

bool isPending(const std::string& source, const std::string& target)
{
    return pendingMoves().find("\\??\\" + source + "|!\\??\\" + target + "|") != std::string::npos;
}

void clearPending()
{
    auttest::Registry().removeValue(kPendingKey, kPendingName);
    for (const char* const name : {kWaiting, "C:\\a_0.tmp", "C:\\b_0.tmp", "C:\\c_0.tmp"})
        auttest::removeAll(name);
}

/// Days since the file was written.
void setAge(const std::string& path, int days)
{
    const aut::UniqueFile file(
        ::CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ULARGE_INTEGER time;
    time.QuadPart = 133'000'000'000'000'000ULL - static_cast<ULONGLONG>(days) * 864'000'000'000ULL;
    const FILETIME written{time.LowPart, time.HighPart};
    ::SetFileTime(file.get(), nullptr, nullptr, &written);
}

/// One file that goes into a folder where an older one may be.
class OneFile : public Scenario
{
public:
    OneFile(const char* name, bool replaces) : m_name(name), m_replaces(replaces) {}
    ~OneFile() override { clearPending(); }

    void prepare() override
    {
        m_held.reset();
        clearPending();
        Scenario::prepare();
        m_folder->makeFolder("target");
        setAge(m_folder->writeFile(kSource, newContent()), 1);
        if (m_replaces)
            setAge(m_folder->writeFile(kTarget, kOld), 2);
    }
    Job job() const override { return {m_name, m_folder->path(), ""}; }
    bool isDone() override { return read(kTarget) == newContent(); }

protected:
    static constexpr char kSource[] = "source\\faults.bin";
    static constexpr char kTarget[] = "target\\faults.bin";
    static constexpr char kOld[] = "the old content";

    bool isOldOrNew(const std::string& content) const { return content == (m_replaces ? kOld : "") || isNew(content); }
    static bool isNew(const std::string& content) { return content == newContent(); }
    void expectSource(Problems& problems) const { problems.expect(isNew(read(kSource)), "the source has changed"); }
    bool isWaiting(const std::string& source) const { return isPending(source, path(kTarget)); }
    void hold()
    {
        m_held = aut::UniqueFile(
            ::CreateFileA(path(kTarget).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    }

    const char* const m_name;
    const bool m_replaces;
    aut::UniqueFile m_held;
};

/// Always replaces: a death leaves half a target, which the next copy replaces. That is the file in flight.
class Copy : public OneFile
{
public:
    Copy() : OneFile("always", true) {}
    void intact(Problems& problems) override { expectSource(problems); }
    bool isDone() override { return OneFile::isDone() || isWaiting(kWaiting); }
    void complete(Problems& problems) override
    {
        Scenario::complete(problems);
        problems.expect(isNew(read(kTarget)), "the target is not the new one");
    }
};

/// A half target would be taken for the newer one for ever.
class ConditionalCopy : public OneFile
{
public:
    explicit ConditionalCopy(bool replaces) : OneFile("newer", replaces) {}
    void intact(Problems& problems) override
    {
        expectSource(problems);
        problems.expect(isOldOrNew(read(kTarget)), "the target is neither the old one nor the new one");
    }
    bool isDone() override { return OneFile::isDone() || isWaiting(kWaiting); }
    void complete(Problems& problems) override
    {
        Scenario::complete(problems);
        problems.expect(isNew(read(kTarget)), "the target is not the new one");
    }
};

class Move : public OneFile
{
public:
    explicit Move(bool replaces) : OneFile("move", replaces) {}
    void intact(Problems& problems) override
    {
        const std::string source = read(kSource);
        const std::string target = read(kTarget);
        problems.expect(isNew(source) || isNew(target), "the file is lost");
        problems.expect(isOldOrNew(target), "the target is neither the old one nor the new one");
    }
    void retry(Problems& problems) override
    {
        if (m_folder->exists(kSource)) // otherwise the move is over
            Scenario::retry(problems);
    }
};

/// The target is in use, and the copy of an earlier replacement waits for the next start of Windows.
class WaitingCopy : public OneFile
{
public:
    WaitingCopy() : OneFile("always", true) {}
    void prepare() override
    {
        OneFile::prepare();
        hold();
        m_folder->writeFile(kSource, kEarlier);
        RT_File(path(kSource).c_str()).CopyTo(path("target").c_str(), WHEN_ALWAYS);
        m_folder->writeFile(kSource, newContent());
    }
    void intact(Problems& problems) override
    {
        expectSource(problems);
        problems.expect(read(kTarget) == kOld, "the target in use has changed");
        problems.expect(isWaiting(kWaiting), "the earlier replacement is forgotten");
        // A move that cannot be registered takes its copy with it, also where an earlier one waits under the same name.
        const std::string waiting = waitingContent();
        problems.expect(waiting == kEarlier || isNew(waiting) || (m_failed && waiting.empty()),
                        "half a file would be put in place");
    }
    bool isDone() override { return isWaiting(kWaiting) && isNew(waitingContent()); }
    void complete(Problems& problems) override
    {
        Scenario::complete(problems);
        for (const std::string& file : rootTemporaries())
            problems.expect(false, file + " is left");
    }

private:
    static constexpr char kEarlier[] = "the earlier content";
    static std::string waitingContent()
    {
        return auttest::fileExists(kWaiting) ? auttest::readFile(kWaiting) : std::string();
    }
    static std::vector<std::string> rootTemporaries()
    {
        std::vector<std::string> files;
        WIN32_FIND_DATAA found{};
        const aut::UniqueFind search(::FindFirstFileA("C:\\*.tmp", &found));
        for (bool more = static_cast<bool>(search); more; more = ::FindNextFileA(search.get(), &found) != FALSE)
        {
            if (std::string("faults_0.tmp") != found.cFileName)
                files.push_back(found.cFileName);
        }
        return files;
    }
};

class WaitingMove : public OneFile
{
public:
    WaitingMove() : OneFile("movelater", true) {}
    void prepare() override
    {
        OneFile::prepare();
        hold();
    }
    void intact(Problems& problems) override
    {
        expectSource(problems);
        problems.expect(read(kTarget) == kOld, "the target in use has changed");
        const std::string pending = pendingMoves();
        problems.expect(pending.empty() || isWaiting(path(kSource)), "half a move is registered: " + pending);
    }
    bool isDone() override { return isWaiting(path(kSource)); }
};

/// A tree with two subfolders.
class Tree : public Scenario
{
public:
    explicit Tree(const char* name) : m_name(name) {}
    ~Tree() override { clearPending(); }

    void prepare() override
    {
        clearPending();
        Scenario::prepare();
        for (const char* const file : kFiles)
            m_folder->writeFile(std::string("source\\Tree\\") + file, contentOf(file));
        m_folder->writeFile("source\\other.txt", "other");
        m_folder->makeFolder("target");
    }
    Job job() const override { return {m_name, m_folder->path(), ""}; }
    void intact(Problems& problems) override
    {
        problems.expect(read("source\\other.txt") == "other", "another file has changed");
    }

protected:
    static constexpr const char* kFiles[] = {"a.txt", "one\\b.txt", "two\\c.txt"};
    static std::string contentOf(const std::string& file) { return file + ": " + newContent().substr(0, 70000); }
    std::string source(const std::string& file) const { return read("source\\Tree\\" + file); }
    std::string target(const std::string& file) const { return read("target\\Tree\\" + file); }

    const char* const m_name;
};

class TreeCopy : public Tree
{
public:
    TreeCopy() : Tree("tree") {}
    void prepare() override
    {
        Tree::prepare();
        m_folder->writeFile("target\\Tree\\a.txt", "old");
        m_folder->writeFile("target\\Tree\\kept.txt", "kept");
    }
    void intact(Problems& problems) override
    {
        Tree::intact(problems);
        int inFlight = 0;
        for (const char* const file : kFiles)
        {
            problems.expect(source(file) == contentOf(file), std::string("the source has changed: ") + file);
            const std::string found = target(file);
            const bool isOld = found == (std::string("a.txt") == file ? "old" : "");
            inFlight += isOld || found == contentOf(file) ? 0 : 1;
        }
        problems.expect(inFlight <= 1, "more than one file is neither old nor new");
        problems.expect(target("kept.txt") == "kept", "a file that is not of the tree has changed");
    }
    bool isDone() override
    {
        for (const char* const file : kFiles)
        {
            const std::string name = file;
            const std::string waiting = std::string("C:\\") + name[name.size() - 5] + "_0.tmp";
            if (target(file) != contentOf(file) && !isPending(waiting, path("target\\Tree\\" + name)))
                return false;
        }
        return true;
    }
};

class TreeMove : public Tree
{
public:
    TreeMove() : Tree("movetree") {}
    void intact(Problems& problems) override
    {
        Tree::intact(problems);
        for (const char* const file : kFiles)
        {
            problems.expect(source(file) == contentOf(file) || target(file) == contentOf(file),
                            std::string("lost: ") + file);
        }
    }
    bool isDone() override
    {
        bool done = !m_folder->exists("source\\Tree");
        for (const char* const file : kFiles)
            done = done && target(file) == contentOf(file);
        return done;
    }
    void retry(Problems& problems) override
    {
        if (m_folder->exists("source\\Tree")) // otherwise the move is over
            Scenario::retry(problems);
    }
};

class TreeRemoval : public Tree
{
public:
    TreeRemoval() : Tree("removetree") {}
    bool isDone() override { return !m_folder->exists("source\\Tree"); }
};
} // namespace

std::unique_ptr<Scenario> makeTreeCopy() { return std::make_unique<TreeCopy>(); }
std::unique_ptr<Scenario> makeTreeMove() { return std::make_unique<TreeMove>(); }
std::unique_ptr<Scenario> makeTreeRemoval() { return std::make_unique<TreeRemoval>(); }
std::unique_ptr<Scenario> makeCopy() { return std::make_unique<Copy>(); }
std::unique_ptr<Scenario> makeCopyOfNewer() { return std::make_unique<ConditionalCopy>(true); }
std::unique_ptr<Scenario> makeCopyToAbsent() { return std::make_unique<ConditionalCopy>(false); }
std::unique_ptr<Scenario> makeMove() { return std::make_unique<Move>(true); }
std::unique_ptr<Scenario> makeMoveToAbsent() { return std::make_unique<Move>(false); }
std::unique_ptr<Scenario> makeWaitingCopy() { return std::make_unique<WaitingCopy>(); }
std::unique_ptr<Scenario> makeWaitingMove() { return std::make_unique<WaitingMove>(); }
} // namespace faults
