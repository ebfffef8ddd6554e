#include "tvutil2/platform/registry/key.h"

#include "tvutil2/platform/registry/registry.h"

namespace tvutil2 {

bool is_root_key(HKEY key) {
    return key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE;
}

LONG resolve_key(HKEY key, DWORD rights, KeyReference& reference) {
    if (is_root_key(key)) {
        reference.hive = key == HKEY_CURRENT_USER ? &Hive::user() : &Hive::machine();
        return ERROR_SUCCESS;
    }
    auto object = handle_table::find(reinterpret_cast<std::uintptr_t>(key));
    if (!object || object->kind() != HandleKind::key) {
        return static_cast<LONG>(ERROR_INVALID_HANDLE);
    }
    reference.object = std::static_pointer_cast<KeyObject>(std::move(object));
    reference.hive = &reference.object->hive;
    reference.id = reference.object->id;
    const bool has_rights = (reference.object->access & rights) == rights;
    return has_rights ? ERROR_SUCCESS : static_cast<LONG>(ERROR_ACCESS_DENIED);
}

}  // namespace tvutil2
