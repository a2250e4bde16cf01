#include "skin/skin_schema.h"

namespace nv {

const ControlRole* controlRole(std::string_view id) {
    for (const ControlRole& role : kControlRoles)
        if (!role.prefix && role.id == id) return &role;
    for (const ControlRole& role : kControlRoles)
        if (role.prefix && id.starts_with(role.id)) return &role;
    return nullptr;
}

} // namespace nv
