#ifndef AUTOOLS_CATALOGUE_CCOMPONENT_H
#define AUTOOLS_CATALOGUE_CCOMPONENT_H

#include "catalogue/AutoUpdateObject.h"
#include "system/CInterruptionEvent.h"

/// What a component may own beside its fields: anything that is deleted through a virtual destructor.
class AUTOOLS_API CComponentAttachment
{
public:
    CComponentAttachment() = default;
    CComponentAttachment(const CComponentAttachment&) = delete;
    CComponentAttachment& operator=(const CComponentAttachment&) = delete;
    virtual ~CComponentAttachment();
};

/// A component of a release: where its files come from, whether products share it, and its map file.
///
/// The layout is part of the exported interface. A copy is enabled and has no map file; assignment deliberately keeps
/// the target's shared flag and map file.
class AUTOOLS_API CComponent : public AutoUpdateObject
{
public:
    CComponent();
    CComponent(long id, const char* name, const char* version, const char* build, const char* language, int action,
               const char* sourceLocation);
    CComponent(const CComponent& other);
    CComponent& operator=(const CComponent& other);
    /// Releases the map file.
    ~CComponent() override;

    /// A null source location keeps the previous one.
    void InitValues(long id, const char* name, const char* version, const char* build, const char* language, int action,
                    const char* sourceLocation);
    void InitValues(long id, const char* name, const char* version, const char* build, const char* language,
                    const char* actionWord, const char* sourceLocation);

    int IsShared() const;
    void SetShared(int shared);
    const char* GetSourceLocation() const;
    CInterruptionEvent& GetInterruptionEvent();

    int Serialize(std::ifstream& stream);
    int Serialize(std::ofstream& stream);

    /// Counts this version among the component's most recent ones and removes the folders of those that are no longer
    /// kept. The list is written first: a process that dies behind that leaves such a folder, or the rest of it, which
    /// nothing names any more.
    void InsertLevelIntoRegistry();

    /// Loads the map file of this version from the folder `root\name\full version`, where a null root means the
    /// component path of the registry. True when a map file is held.
    bool LoadMapFile(char* componentRoot);
    /// Releases the map file and, deliberately, unloads the map-file library for every component of the process; the
    /// next use loads it again.
    void ReleaseMapFile();
    /// Passes both arguments through to the map-file library, loading the map file first; 0 without the library.
    int CheckMapFile(int** items, bool flag);
    /// Reads a parameter into `out`, which the library does not bound, and returns it: empty when no map file is held,
    /// null (with an empty `out`) without the library.
    char* GetMapFileParam(const char* name, char* out);

protected:
    template <typename T> friend struct aut::LayoutOf;

    /// Writes the version folder into `outPath` (260 bytes); true when it holds a file named FromMSI.
    bool IsFromMSIComponent(char* outPath);

private:
    void InitOwnValues(const char* sourceLocation);
    /// Writes the folder of this version into a buffer of 260 bytes; false when it does not fit or would lead out of
    /// the root.
    bool VersionFolder(const char* componentRoot, char* folder) const;

protected:
    unsigned __int64 m_mapFile;
    CComponentAttachment* m_attachment; ///< owned, deleted with the map file
    int m_reserved;
    int m_shared;
    char m_sourceLocation[260];
    CInterruptionEvent m_interruption;
};

#endif
