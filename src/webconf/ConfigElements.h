#ifndef AUTOOLS_WEBCONF_CONFIGELEMENTS_H
#define AUTOOLS_WEBCONF_CONFIGELEMENTS_H

#include "foundation/Export.h"
#include "system/CRange.h"

/// A numbered timer.
class AUTOOLS_API CTimerElement
{
public:
    CTimerElement();
    CTimerElement(const CTimerElement& other);
    CTimerElement& operator=(const CTimerElement& other);
    virtual ~CTimerElement();

    int GetTimerID();
    void SetTimerID(int id);
    /// Seconds; -1 when the document holds anything below.
    int GetTimerValue();
    void SetTimerValue(int seconds);

private:
    template <typename T> friend struct aut::LayoutOf;

    int m_id;
    int m_value;
};

/// A numbered keyboard shortcut.
class AUTOOLS_API CHotKeyElement
{
public:
    CHotKeyElement();
    CHotKeyElement(const CHotKeyElement& other);
    CHotKeyElement& operator=(const CHotKeyElement& other);
    virtual ~CHotKeyElement();

    int m_id;
    char m_key;
    unsigned short m_modifiers; ///< as RegisterHotKey takes them: 1 Alt, 2 Ctrl, 4 Shift, 8 Win
};

/// A numbered retry policy.
class AUTOOLS_API CErrorTableMember
{
public:
    CErrorTableMember();
    CErrorTableMember(const CErrorTableMember& other);
    CErrorTableMember& operator=(const CErrorTableMember& other);
    virtual ~CErrorTableMember();

    CRange m_delay; ///< in the document's own unit
    int MaxRetries;
    int m_index;
};

#endif
