#include "tvutil2/data/shell.h"

#include "tvutil2/platform/files/shell_link.h"

#include <string>
#include <string_view>

namespace {

// Owner of one reference.
template <class Interface>
class Reference {
  public:
    Reference() = default;
    ~Reference() {
        if (m_object != nullptr) m_object->Release();
    }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    Interface* operator->() const { return m_object; }

    /// Takes over what a call puts into the place.
    template <class Call>
    HRESULT fill(Call call) {
        void* object = nullptr;
        const HRESULT result = call(&object);
        m_object = static_cast<Interface*>(object);
        return result;
    }

  private:
    Interface* m_object = nullptr;
};

HRESULT create_link(Reference<IShellLinkW>& link, Reference<IPersistFile>& file) {
    const HRESULT result = link.fill([](void** object) {
        return CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                object);
    });
    if (FAILED(result)) return result;
    return file.fill(
        [&link](void** object) { return link->QueryInterface(IID_IPersistFile, object); });
}

}  // namespace

HRESULT SHCreateShortcutEx(const char16_t* link_path, SHORTCUTSTRUCT* info) {
    if (info == nullptr) return E_FAIL;
    Reference<IShellLinkW> link;
    Reference<IPersistFile> file;
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
    Reference<IShellLinkW> link;
    Reference<IPersistFile> file;
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
