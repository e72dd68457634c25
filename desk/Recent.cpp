#include "desk/Recent.h"

#include <QCryptographicHash>
#include <QSettings>

#include <utility>

namespace orvo::desk {

namespace {

constexpr int longestKey = 256;

QSettings settings() {
    return {QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Orvo"),
            QStringLiteral("orvo-desk")};
}

/// A key may hold what a settings group must not.
QString entryOf(const QString& desktop) {
    const QByteArray digest =
        QCryptographicHash::hash(desktop.toCaseFolded().toUtf8(), QCryptographicHash::Sha256);
    return QLatin1String("recent/") + QString::fromLatin1(digest.toHex().left(16));
}

} // namespace

Recent::Recent(QString desktop) : m_desktop(std::move(desktop)) {
    const QStringList kept = settings().value(entryOf(m_desktop)).toStringList();
    for (const QString& key : kept)
        if (m_keys.size() < most && !key.isEmpty() && key.size() <= longestKey &&
            !m_keys.contains(key))
            m_keys << key;
}

void Recent::use(const QString& key) {
    m_keys.removeAll(key);
    m_keys.prepend(key);
    while (m_keys.size() > most)
        m_keys.removeLast();
    settings().setValue(entryOf(m_desktop), m_keys);
}

} // namespace orvo::desk
