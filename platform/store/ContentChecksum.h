// ContentChecksum.h: the checksum that a store keeps beside the bytes of a content.
#ifndef ORVO_PLATFORM_STORE_CONTENTCHECKSUM_H
#define ORVO_PLATFORM_STORE_CONTENTCHECKSUM_H

#include <QCryptographicHash>

#include <algorithm>
#include <string>
#include <string_view>

namespace orvo::store {

/// SHA-256 of bytes that come in pieces, as lower-case hexadecimal digits: sha256sum gives the
/// same.
class Checksum {
public:
    void reset() { m_hash.reset(); }
    void add(std::string_view bytes) {
        while (!bytes.empty()) {
            const size_t piece = std::min(bytes.size(), mostAtOnce);
            m_hash.addData(bytes.data(), static_cast<int>(piece));
            bytes.remove_prefix(piece);
        }
    }
    std::string text() const { return m_hash.result().toHex().toStdString(); }

private:
    static constexpr size_t mostAtOnce = 1 << 30; ///< the hash counts in int
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
};

inline std::string checksum(std::string_view bytes) {
    Checksum sum;
    sum.add(bytes);
    return sum.text();
}

} // namespace orvo::store

#endif
