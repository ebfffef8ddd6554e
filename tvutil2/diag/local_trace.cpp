#include "tvutil2/diag/local_trace.h"

#include "tvutil2/platform/base/clock.h"

#include <utility>

CLocalTrace::CLocalTrace(CString name, int value) : m_nValue(value), m_strName(std::move(name)) {}
CLocalTrace::~CLocalTrace() = default;

namespace NLogTrace {

CLocalTrace::CLocalTrace(CString name, int value)
    : m_dwTick(GetTickCount()), m_nValue(value), m_strName(std::move(name)) {}
CLocalTrace::~CLocalTrace() = default;

}  // namespace NLogTrace
