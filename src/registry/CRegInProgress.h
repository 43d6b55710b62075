#ifndef AUTOOLS_REGISTRY_CREGINPROGRESS_H
#define AUTOOLS_REGISTRY_CREGINPROGRESS_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\IN_PROGRESS", or "...\IN_PROGRESS_LOCAL" on a local installation: how far the
/// update cycle has come.
class AUTOOLS_API CRegInProgress : public CRegBase
{
public:
    explicit CRegInProgress(bool readOnly);

    const char* GetProductFilePath();
    void SetProductFilePath(const char* text);
    int GetPhase();
    void SetPhase(int phase);
    bool IsPrioA();
    /// False deletes the value.
    void SetPrioA(bool on);
    const char* GetAction();
    void SetAction(const char* text);
    void SetAction(int number);
    const char* GetObjectA();
    void SetObject(const char* text);

protected:
    CRegInProgress(const char* path, bool readOnly);
};

/// Always the key of a local installation, and its source location.
class AUTOOLS_API CRegInProgressLocal : public CRegInProgress
{
public:
    explicit CRegInProgressLocal(bool readOnly);

    const char* GetLocation();
    void SetLocation(const char* text);
};

#endif
