// Named marks of a place in a program. They write to no log.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/types.h"

class TVUTIL_API CLocalTrace {
  public:
    CLocalTrace(CString name, int value);
    CLocalTrace(const CLocalTrace&) = default;
    CLocalTrace& operator=(const CLocalTrace&) = default;
    virtual ~CLocalTrace();

    int m_nValue;
    CString m_strName;
};

namespace NLogTrace {

/// The same with the time at which it was made, by GetTickCount.
class TVUTIL_API CLocalTrace {
  public:
    CLocalTrace(CString name, int value);
    CLocalTrace(const CLocalTrace&) = default;
    CLocalTrace& operator=(const CLocalTrace&) = default;
    virtual ~CLocalTrace();

    DWORD m_dwTick;
    int m_nValue;
    CString m_strName;
};

}  // namespace NLogTrace
