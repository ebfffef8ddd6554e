#include "tvutil2/platform/notify/activation.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/notify/toast_desk.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace tvutil2 {
namespace {

struct ClassObject {
    DWORD cookie;
    CLSID id;
    IUnknown* object;  // with a reference
    bool is_suspended;
};

constinit std::mutex g_lock;
const ForkLock g_fork_safe(g_lock, ForkRank::area);
DWORD g_last_cookie = 0;

std::vector<ClassObject>& class_objects() {
    static auto* const list = new std::vector<ClassObject>;
    return *list;
}

// With a reference for the caller; null when there is none.
IUnknown* find_object(const CLSID& id) {
    const std::lock_guard guard(g_lock);
    const auto& list = class_objects();
    const auto found = std::find_if(list.rbegin(), list.rend(),
                                    [&id](const ClassObject& entry) { return entry.id == id; });
    if (found == list.rend()) return nullptr;
    found->object->AddRef();
    return found->object;
}

}  // namespace

bool activate_class(const CLSID& class_id, const std::u16string& model_id,
                    const std::u16string& arguments) noexcept {
    auto* const object = find_object(class_id);
    if (object == nullptr) return false;
    IClassFactory* factory = nullptr;
    INotificationActivationCallback* callback = nullptr;
    if (SUCCEEDED(object->QueryInterface(IID_IClassFactory, reinterpret_cast<void**>(&factory)))) {
        if (SUCCEEDED(factory->CreateInstance(nullptr, IID_INotificationActivationCallback,
                                              reinterpret_cast<void**>(&callback)))) {
            callback->Activate(model_id.c_str(), arguments.c_str(), nullptr, 0);
            callback->Release();
        }
        factory->Release();
    }
    object->Release();
    return true;
}

}  // namespace tvutil2

HRESULT CoRegisterClassObject(const CLSID& class_id, IUnknown* object, DWORD context, DWORD flags,
                              DWORD* cookie) {
    const bool is_suspended = (flags & REGCLS_SUSPENDED) != 0;
    if (object == nullptr || cookie == nullptr || context != CLSCTX_LOCAL_SERVER ||
        (flags & ~REGCLS_SUSPENDED) != REGCLS_MULTIPLEUSE) {
        return E_INVALIDARG;
    }
    object->AddRef();
    {
        const std::lock_guard guard(tvutil2::g_lock);
        *cookie = ++tvutil2::g_last_cookie;
        tvutil2::class_objects().push_back({*cookie, class_id, object, is_suspended});
    }
    if (!is_suspended) tvutil2::serve_class(class_id);
    return S_OK;
}

HRESULT CoRevokeClassObject(DWORD cookie) {
    IUnknown* object = nullptr;
    {
        const std::lock_guard guard(tvutil2::g_lock);
        auto& list = tvutil2::class_objects();
        const auto found = std::find_if(list.begin(), list.end(), [cookie](const auto& entry) {
            return entry.cookie == cookie;
        });
        if (found == list.end()) return CO_E_OBJNOTREG;
        object = found->object;
        list.erase(found);
    }
    object->Release();
    return S_OK;
}

HRESULT CoResumeClassObjects() {
    std::vector<CLSID> resumed;
    {
        const std::lock_guard guard(tvutil2::g_lock);
        for (auto& entry : tvutil2::class_objects()) {
            if (entry.is_suspended) resumed.push_back(entry.id);
            entry.is_suspended = false;
        }
    }
    for (const auto& id : resumed) tvutil2::serve_class(id);
    return S_OK;
}
