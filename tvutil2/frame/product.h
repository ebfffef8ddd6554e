// Identity of the family's products: program codes, names, installation facts, and the layout of
// the family's registry keys.
//
// A program code is an index from 0 to 7. The queries keep no state and may run on any number of
// threads; a missing key or value is no error and gives the default.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

namespace tvutil2 {

/// Major version of the family: baked into window-class names, data folders and registry keys.
inline constexpr unsigned int kMajorVersion = 8;

/// Program codes with a meaning of their own to the library.
inline constexpr unsigned int kOmbrelia = 0;
inline constexpr unsigned int kPelrin = 1;
inline constexpr unsigned int kZemt = 2;
inline constexpr unsigned int kDovr = 4;
inline constexpr unsigned int kOmbreliaEnterprise = 6;
inline constexpr unsigned int kPelrinDovr = 7;

}  // namespace tvutil2

/// Window-class names of the products, with the major version in them.
TVUTIL_API extern const CString DOVR_CLASS_NAME;
TVUTIL_API extern const CString PELRIN_CLASS_NAME;
TVUTIL_API extern const CString VANTROSA_CLASS_NAME;
TVUTIL_API extern const CString VANTROSA_CORE_CLASSNAME;
TVUTIL_API extern const CString OMBR_CLASS_NAME;
TVUTIL_API extern const CString PELRIN_CORE_CLASS_NAME;
TVUTIL_API extern const CString PELRIN_FM_CLASS_NAME;
TVUTIL_API extern const CString VANTROSA_FM_CLASS_NAME;
TVUTIL_API extern const CString PELRIN_VIEWER_CLASS_NAME;
TVUTIL_API extern const CString VANTROSA_VIEWER_CLASSNAME;
/// The version folder of data paths: "8".
TVUTIL_API extern const CString CFM_VERSION;

/// Name of a program code, which is also its key below Software\Tolvarine; empty for a code above
/// 7.
TVUTIL_API CString TvGetProductName(unsigned int code);

/// Program code of the running executable: by its base name, else by the products that lie beside
/// it (Ombrelia, Pelrin, Dovr, Zemt, in this order), else 0.
TVUTIL_API int TvGetProgramCodeFromInstalled();

/// Installation facts from HKLM\Software\Tolvarine\<name>\<major>, for codes up to 7. Empty when
/// the key or the value isn't there.
TVUTIL_API CString TvGetProductVersion(unsigned int code, unsigned int major);
TVUTIL_API CString TvGetResellerName(unsigned int code, unsigned int major);
/// The third field of the version in four digits; empty unless all three are there and it isn't 0.
TVUTIL_API CString TvGetProductBuildVersion(unsigned int code, unsigned int major);
/// The package that a product was installed from: 6 for "Grandline", 7 for "PelrinPlus", without
/// regard to case; else `code` itself.
TVUTIL_API unsigned int TvGetPackageCode(unsigned int code, unsigned int major);
/// Always 1.
TVUTIL_API unsigned int TvGetPackageType();
/// Always 1: the data folder may be changed.
TVUTIL_API int TvChangeDataFolder();
