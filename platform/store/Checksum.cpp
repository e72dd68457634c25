#include "platform/store/Checksum.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

namespace orvo::store {

namespace {

constexpr int pieceSize = 1 << 20;
constexpr int digits = 64;

QString nameOf(const std::string& file) {
    return QString::fromStdString(file);
}

} // namespace

std::string checksumFile(const std::string& backup) {
    return backup + ".sha256";
}

std::string checksumLine(const std::string& sum, const std::string& name) {
    std::string escaped;
    for (const char c : name)
        escaped += c == '\n' ? "\\n" : c == '\\' ? "\\\\" : std::string(1, c);
    // sha256sum marks such a name in front of the sum.
    return (escaped == name ? "" : "\\") + sum + "  " + escaped + "\n";
}

Status sumOf(const std::string& file, const Progress& progress, std::string* sum) {
    const std::string what = StdText::tr("Контрольная сумма файла ") + shown(file);
    QFile source(nameOf(file));
    if (!source.open(QIODevice::ReadOnly))
        return {Failed, what + ": " + source.errorString().toStdString()};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const auto all = static_cast<uint64_t>(source.size());
    uint64_t done = 0;
    for (;;) {
        const QByteArray piece = source.read(pieceSize);
        if (piece.isEmpty())
            break;
        hash.addData(piece);
        done += static_cast<uint64_t>(piece.size());
        if (progress && !progress(done, all))
            return {Stopped, what + StdText::tr(": прервано")};
    }
    if (source.error() != QFileDevice::NoError)
        return {Failed, what + ": " + source.errorString().toStdString()};
    *sum = hash.result().toHex().toStdString();
    return {};
}

bool hasChecksum(const std::string& backup) {
    return QFileInfo::exists(nameOf(checksumFile(backup)));
}

Status verifyChecksum(const std::string& backup, const Progress& progress) {
    if (!hasChecksum(backup))
        return {};
    const std::string what = StdText::tr("Резервная копия ") + shown(backup);
    QFile beside(nameOf(checksumFile(backup)));
    if (!beside.open(QIODevice::ReadOnly))
        return {Refused, what + StdText::tr(": контрольная сумма рядом с ней не читается (") +
                             beside.errorString().toStdString() + ")"};
    QByteArray expected = beside.read(digits + 1);
    if (expected.startsWith('\\'))
        expected.remove(0, 1);
    std::string sum;
    const Status status = sumOf(backup, progress, &sum);
    if (!status.ok())
        return status;
    if (expected.left(digits).toLower().toStdString() != sum)
        return {Refused,
                what + StdText::tr(" изменена или повреждена: её контрольная сумма не та, что в ") +
                    shown(checksumFile(backup))};
    return {};
}

} // namespace orvo::store
