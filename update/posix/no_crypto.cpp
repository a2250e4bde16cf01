// The portable builds link no cryptography library: they cannot make keys, sign or verify, and say so.

#include "update/crypto.h"

namespace nv::update {

Crypto* systemCrypto() {
    return nullptr;
}

} // namespace nv::update
