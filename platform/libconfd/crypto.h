// The process-wide key of encrypted leaves.
#pragma once

#include <string>

namespace standin {

// Takes the key and cleanses what was handed in.
int install_crypto_key(std::string key);

}  // namespace standin
