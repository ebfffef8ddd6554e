#include "tvutil2/platform/registry/key.h"

#include "tvutil2/platform/registry/registry.h"

namespace tvutil2 {

bool is_root_key(HKEY key) {
    return key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE;
}

LONG resolve_key(HKEY key, DWORD rights, KeyReference& reference) {
    if (is_root_key(key)) {
        static auto* const memories = new KeyMemory[2];
        const bool is_user = key == HKEY_CURRENT_USER;
        reference.hive = is_user ? &Hive::user() : &Hive::machine();
        reference.memory = &memories[is_user ? 0 : 1];
        return ERROR_SUCCESS;
    }
    auto object = handle_table::find(reinterpret_cast<std::uintptr_t>(key));
    if (!object || object->kind() != HandleKind::key) {
        return static_cast<LONG>(ERROR_INVALID_HANDLE);
    }
    reference.object = std::static_pointer_cast<KeyObject>(std::move(object));
    reference.hive = &reference.object->hive;
    reference.id = reference.object->id;
    reference.memory = &reference.object->memory;
    const bool has_rights = (reference.object->access & rights) == rights;
    return has_rights ? ERROR_SUCCESS : static_cast<LONG>(ERROR_ACCESS_DENIED);
}

bool is_same_key(HKEY one, HKEY other) {
    KeyReference first;
    KeyReference second;
    return resolve_key(one, 0, first) == ERROR_SUCCESS &&
           resolve_key(other, 0, second) == ERROR_SUCCESS && first.hive == second.hive &&
           first.id.row == second.id.row && second.id.is_in(first.id.store);
}

}  // namespace tvutil2
