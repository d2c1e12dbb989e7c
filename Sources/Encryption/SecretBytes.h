// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <memory>

namespace orvane {

/// Bytes that nobody else may learn. They are wiped when dropped, and copied only where `clone` says so. The
/// object may be read from any thread.
class SecretBytes {
public:
    SecretBytes() = default;
    /// Zeros, to be written over.
    explicit SecretBytes(qsizetype size);
    /// Copies; the source stays with whoever has it.
    explicit SecretBytes(QByteArrayView bytes);
    ~SecretBytes() { wipe(); }

    SecretBytes(SecretBytes &&other) noexcept;
    SecretBytes &operator=(SecretBytes &&other) noexcept;
    SecretBytes(const SecretBytes &) = delete;
    SecretBytes &operator=(const SecretBytes &) = delete;

    SecretBytes clone() const { return SecretBytes(view()); }

    qsizetype size() const { return m_size; }
    const uchar *data() const { return m_bytes.get(); }
    uchar *data() { return m_bytes.get(); }
    QByteArrayView view() const { return {m_bytes.get(), m_size}; }

private:
    void wipe() noexcept;

    std::unique_ptr<uchar[]> m_bytes;
    qsizetype m_size = 0;
};

/// Wipes bytes that an interface wants in this form.
void wipe(QByteArray &bytes);

} // namespace orvane
