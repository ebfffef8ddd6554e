// What an import of earlier data would do: the decisions and the lists that TvInitDataFolder
// (data_import.h) follows, to be looked at before.
//
// A plan is of the moment: it reads the registry and the disk as they are. It copies nothing, but
// as any first use it makes the user data folder and stores where it is. All functions are safe
// from any thread.
#pragma once

#include "tvutil2/framework/strings.h"

#include <vector>

namespace tvutil2 {

enum class ImportAnswer {
    done,       ///< there was an import, or a version's mark is set: nothing is done any more
    copy,       ///< the data of version 7 or 6 is copied
    tool,       ///< older data of the product: the migration tool takes it over
    nothing,    ///< there is no earlier data, which the product's status will say
    settled,    ///< this product's status, or that of the Enterprise package, leaves nothing to do
    not_asked,  ///< older data isn't looked for with this kind
    /// There is data, but the user data folder can't be had now. It isn't brought to the makeshift
    /// one, where nobody would find it the next day; the next start tries again.
    no_folder,
};

struct ImportPlan {
    ImportAnswer answer = ImportAnswer::done;
    unsigned int version = 0;  ///< of the data that was found
    CString from, to;          ///< the data folder of that version, and the present one
    CString status;            ///< name of the product's status
    CString tool_switch;       ///< the migration tool's; none is started without
};

/// `kind` as in TvInitDataFolder.
TVUTIL_API ImportPlan plan_import(unsigned int kind);

struct ImportStep {
    enum class Kind {
        folder,    ///< copied over what is there
        file,      ///< copied if nothing is there
        sessions,  ///< as a folder, from wherever the sessions lie
    };
    Kind kind;
    CString from, to;
};

/// The folders and the files of a data folder that are copied, whether they are there or not. None
/// into itself.
TVUTIL_API std::vector<ImportStep> import_steps(const CString& from, const CString& to);

/// The session folders that are there, by what "SessionPath.ini" in the new folder, or where that
/// has none in the old one, says of them. Left out is what would be copied to itself, and a chosen
/// folder that is the root of the very drive that is copied to: it would bring the whole machine.
TVUTIL_API std::vector<ImportStep> session_steps(const CString& from, const CString& to);

}  // namespace tvutil2
