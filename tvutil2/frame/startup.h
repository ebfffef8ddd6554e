// What happens when the library is loaded, and what a product calls first.
//
// A load runs static initialisers and the framework's start, and nothing else: no registry key is
// read and no file is opened until somebody asks.
#pragma once

#include "tvutil2/framework/app.h"
#include "tvutil2/platform/base/export.h"

/// The library's application object. One static object exists.
class TVUTIL_API CtvutilApp : public CWinApp {
  public:
    CtvutilApp();
    /// Keeps the instance for the library's own string look-ups.
    BOOL InitInstance() override;
    DECLARE_MESSAGE_MAP()
};

/// Start-up of a process, called by a product before all else: takes the application's folder and
/// the current one out of the search for modules, and sets the DPI awareness to what the registry
/// prefers. Every failure falls through to the next step.
///
/// `dpiProgram` has a numbering of its own: 0 the family's common setting alone; 1 the session
/// browser, 2 Pelrin, 3 Dovr, 4 Zemt, each with a setting of its own that wins over the common one.
/// Changes process-wide state without a lock: once, from the first thread.
TVUTIL_API void TvCommonInitialize(unsigned int dpiProgram);

namespace tvutil2 {

/// The instance that the library's resources belong to; what every string look-up of the library
/// passes, so that it finds its own strings and not the executable's.
[[nodiscard]] TVUTIL_API HINSTANCE resource_instance();

}  // namespace tvutil2
