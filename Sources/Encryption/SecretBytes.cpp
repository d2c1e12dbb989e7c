// SPDX-License-Identifier: MIT
#include "Encryption/SecretBytes.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <utility>

namespace orvane {

SecretBytes::SecretBytes(qsizetype size)
    : m_bytes(std::make_unique<uchar[]>(size_t(size)))
    , m_size(size) {}

SecretBytes::SecretBytes(QByteArrayView bytes)
    : SecretBytes(bytes.size()) {
    std::copy(bytes.begin(), bytes.end(), m_bytes.get());
}

SecretBytes::SecretBytes(SecretBytes &&other) noexcept
    : m_bytes(std::move(other.m_bytes))
    , m_size(std::exchange(other.m_size, 0)) {}

SecretBytes &SecretBytes::operator=(SecretBytes &&other) noexcept {
    if (this != &other) {
        wipe();
        m_bytes = std::move(other.m_bytes);
        m_size = std::exchange(other.m_size, 0);
    }
    return *this;
}

void SecretBytes::wipe() noexcept {
    if (m_bytes)
        OPENSSL_cleanse(m_bytes.get(), size_t(m_size));
}

void wipe(QByteArray &bytes) {
    if (!bytes.isEmpty())
        OPENSSL_cleanse(bytes.data(), size_t(bytes.size()));
    bytes.clear();
}

} // namespace orvane
