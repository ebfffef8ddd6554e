#include "tvutil2/data/shell.h"

#include "tvutil2/platform/base/com_reference.h"
#include "tvutil2/platform/files/shell_link.h"

#include <string>
#include <string_view>

namespace {

using tvutil2::ComReference;

HRESULT create_link(ComReference<IShellLinkW>& link, ComReference<IPersistFile>& file) {
    const HRESULT result = CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER,
                                            IID_IShellLinkW, link.any());
    return FAILED(result) ? result : link->QueryInterface(IID_IPersistFile, file.any());
}

}  // namespace

HRESULT SHCreateShortcutEx(const char16_t* link_path, SHORTCUTSTRUCT* info) {
    if (info == nullptr) return E_FAIL;
    ComReference<IShellLinkW> link;
    ComReference<IPersistFile> file;
    if (const HRESULT result = create_link(link, file); FAILED(result)) return result;
    link->SetPath(info->pszTarget);
    link->SetDescription(info->pszDescription);
    link->SetHotkey(info->wHotKey);
    link->SetIconLocation(info->pszIconPath, info->nIconIndex);
    link->SetArguments(info->pszArguments);
    return file->Save(link_path, TRUE);
}

HRESULT ResolveShortcut(const char16_t* link_path, CString& target, int with_ui) {
    constexpr int kDescriptionSize = 1024;
    ComReference<IShellLinkW> link;
    ComReference<IPersistFile> file;
    HRESULT result = create_link(link, file);
    if (FAILED(result)) return result;
    const std::u16string_view path = link_path != nullptr ? link_path : u"";
    result = file->Load(std::u16string(path.substr(0, MAX_PATH - 1)).c_str(), STGM_READ);
    if (FAILED(result)) return result;
    result =
        link->Resolve(nullptr, with_ui != 0 ? SLR_UPDATE : SLR_UPDATE | SLR_NO_UI_WITH_MSG_PUMP);
    if (FAILED(result)) return result;
    char16_t found[MAX_PATH];
    result = link->GetPath(found, MAX_PATH, nullptr, SLGP_RAWPATH);
    if (FAILED(result)) return result;
    char16_t description[kDescriptionSize];
    result = link->GetDescription(description, kDescriptionSize);
    if (FAILED(result)) return result;
    target = found;
    return result;
}
