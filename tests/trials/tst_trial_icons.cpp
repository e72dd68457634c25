// What anybody may put into the folder of icons, shown in a tree: pictures of every format changed
// at random, and files that are no files. The view is never held up, memory stays bounded, nothing
// outside of the folder is opened, and a sound picture is shown afterwards.
// ORVO_TRIAL_ROUNDS is the number of icons.
#include "Trial.h"

#include "models/MenuTreeModel.h"
#include "platform/client/IconFile.h"

#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTreeView>
#include <QtEndian>

#include <fcntl.h>
#include <random>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace orvo;
using namespace orvo::test;

namespace {

constexpr int iconsAtOnce = 50;
constexpr int longestTurnMs = 1000;     ///< of the event loop, on a busy machine
constexpr long mostMemoryKiB = 1 << 19; ///< more than before, at the peak

QByteArray encoded(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QVector<QByteArray> soundPictures() {
    QImage image(48, 48, QImage::Format_ARGB32);
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 48; ++x)
            image.setPixel(x, y, qRgba(x * 5, y * 5, x ^ y, 255 - x));
    QVector<QByteArray> pictures;
    for (const auto& to : {QImage::Format_ARGB32, QImage::Format_Indexed8, QImage::Format_Mono,
                           QImage::Format_RGB32})
        for (const char* format : {"PNG", "JPG", "BMP", "PPM", "XPM", "XBM", "ICO", "GIF", "WEBP"})
            if (const QByteArray bytes = encoded(image.convertToFormat(to), format);
                !bytes.isEmpty())
                pictures << bytes;
    pictures << "GIF89a\x10\0\x10\0\x80\0\0\0\0\0\xff\xff\xff,\0\0\0\0\x10\0\x10\0\0\2\x0e\x84\x8f"
                "\xa9\xcb\xed\x0f\xa3\x9c\xb4\xda\x8b\xb3>\x05\0;"
             << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"16\" height=\"16\"><defs>"
                "<linearGradient id=\"g\"><stop offset=\"0\" stop-color=\"red\"/></linearGradient>"
                "</defs><g transform=\"scale(2)\"><rect width=\"8\" height=\"8\" fill=\"url(#g)\"/>"
                "<path d=\"M1 1 L4 4 A2 2 0 0 1 3 3 Z\" stroke-width=\"2\"/><text>a</text></g>"
                "</svg>";
    return pictures;
}

// Colours that no other picture has, but by the rarest chance.
const QColor good(36, 104, 172);
const QColor outside(18, 52, 86);

QByteArray plain(const QColor& color) {
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(color);
    return encoded(image, "PNG");
}

class Mutator {
public:
    explicit Mutator(unsigned from) : m_random(from) {}
    int below(int most) { return int(m_random() % unsigned(std::max(1, most))); }

    QByteArray picture(const QVector<QByteArray>& sound) {
        QByteArray bytes = sound[below(sound.size())];
        for (int changes = below(5); changes > 0; --changes)
            change(bytes, sound);
        return below(4) == 0 ? bytes : withChecksums(bytes); // so that a decoder goes on
    }

private:
    void change(QByteArray& bytes, const QVector<QByteArray>& sound) {
        const int at = below(bytes.size());
        const int early = below(std::min<int>(bytes.size(), 64)); // where sizes stand
        switch (below(8)) {
        case 0:
            if (!bytes.isEmpty())
                bytes[at] = char(m_random());
            break;
        case 1:
            bytes.truncate(at);
            break;
        case 2:
            bytes.insert(at, bytes.mid(below(bytes.size()), below(200)).repeated(below(50)));
            break;
        case 3: { // a size
            const quint32 numbers[] = {
                0,          1,          0x7FFFFFFF, 0x80000000,
                0xFFFFFFFF, 0x30750000, 0x7530,     static_cast<quint32>(m_random())};
            const quint32 number = numbers[below(8)];
            bytes.replace(early, 4, reinterpret_cast<const char*>(&number), 4);
            break;
        }
        case 4:
            bytes = bytes.left(at) + sound[below(sound.size())].mid(below(500));
            break;
        case 5: { // a number in a text
            static const QRegularExpression digits("[0-9]+");
            const auto found = digits.match(QString::fromLatin1(bytes), early);
            if (found.hasMatch())
                bytes.replace(found.capturedStart(), found.capturedLength(),
                              QByteArray::number(double(m_random()) * m_random(), 'g', 12));
            break;
        }
        case 6: { // an element many times, one within the other
            const int begin = bytes.indexOf("<g");
            if (begin >= 0)
                bytes.insert(begin, QByteArray("<g opacity=\"0.5\">").repeated(below(20'000)));
            break;
        }
        default:
            for (char& byte : bytes)
                if (below(100) == 0)
                    byte = char(m_random());
        }
    }

    /// A PNG whose chunks have the checksums of what they hold now.
    static QByteArray withChecksums(QByteArray bytes) {
        if (!bytes.startsWith("\x89PNG"))
            return bytes;
        for (int at = 8; at + 12 <= bytes.size();) {
            const auto* data = reinterpret_cast<const uchar*>(bytes.constData()) + at;
            const quint32 length = qFromBigEndian<quint32>(data);
            if (length > quint32(bytes.size() - at - 12))
                break;
            quint32 sum = 0xFFFFFFFF;
            for (quint32 i = 4; i < length + 8; ++i) {
                sum ^= data[i];
                for (int bit = 0; bit < 8; ++bit)
                    sum = (sum >> 1) ^ (sum & 1 ? 0xEDB88320 : 0);
            }
            qToBigEndian(~sum, bytes.data() + at + 8 + length);
            at += int(length) + 12;
        }
        return bytes;
    }

    std::mt19937 m_random;
};

/// A folder of icons, and beside it what no icon may reach.
class Folder {
public:
    Folder() {
        QDir(m_dir.path()).mkdir("icons");
        put("../outside.png", plain(outside));
        put("good.png", plain(good));
    }
    QString path(const QString& name) const { return m_dir.filePath("icons/" + name); }

    /// Puts something there that is no regular file of the folder; the name that a record gives it.
    QString putOddThing(int kind, const QString& name) const {
        const QByteArray file = QFile::encodeName(path(name));
        const QString up = QString("../").repeated(20);
        switch (kind) {
        case 0:
            ::mkfifo(file.constData(), 0600);
            return name;
        case 1:
            QDir().mkdir(path(name));
            return name;
        case 2: {
            sockaddr_un address{};
            address.sun_family = AF_UNIX;
            qstrncpy(address.sun_path, file.constData(), sizeof address.sun_path);
            const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
            ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
            ::close(socket);
            return name;
        }
        case 3: { // a TiB of nothing
            QFile sparse(path(name));
            sparse.open(QIODevice::WriteOnly);
            sparse.resize(1LL << 40);
            return name;
        }
        default: {
            const QStringList targets = {
                "/dev/zero",      "/dev/ptmx", "/dev/tty",       "/proc/self/mem",
                "../outside.png", name,        "/proc/kmsg",     "/dev/stdin",
                "/dev/random",    "..",        "/proc/self/fd/0"};
            const QString target = targets[kind % targets.size()];
            if (kind % 2 == 0)
                return target.startsWith('/') ? up + target.mid(1) : target;
            QFile::link(target, path(name));
            return name;
        }
        }
    }
    void put(const QString& name, const QByteArray& bytes) const {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

private:
    QTemporaryDir m_dir;
};

long peakMemoryKiB() {
    QFile file("/proc/self/status");
    if (file.open(QIODevice::ReadOnly))
        for (const QByteArray& line : file.readAll().split('\n'))
            if (line.startsWith("VmHWM:"))
                return line.mid(6).trimmed().split(' ').first().toLong();
    return 0;
}

QtMessageHandler previousHandler = nullptr;

/// Qt's decoders warn of every broken picture, and QtTest shows a limited number of messages.
void dropWarnings(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type != QtWarningMsg)
        previousHandler(type, context, message);
}

bool hasColor(const QTreeView& view, const QColor& color) {
    const QImage image = view.viewport()->grab().toImage();
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelColor(x, y) == color)
                return true;
    return false;
}

} // namespace

class TestTrialIcons : public QObject {
    Q_OBJECT
private slots:
    void noIconHoldsUpAView() {
        const int wanted = rounds(200);
        Mutator mutator(seed());
        const QVector<QByteArray> sound = soundPictures();
        previousHandler = qInstallMessageHandler(dropWarnings);
        qInfo("%d sound pictures to begin with", int(sound.size()));
        QVERIFY(sound.size() > 15);
        const long before = peakMemoryKiB();
        int shown = 0;
        int odd = 0;
        qint64 longest = 0;
        for (int done = 0; done < wanted; done += iconsAtOnce) {
            Folder folder;
            QStringList names;
            for (int i = 0; i < iconsAtOnce; ++i) {
                const QString name = QString("%1.%2").arg(i).arg(mutator.below(2) ? "png" : "svg");
                if (mutator.below(6) == 0) {
                    names << folder.putOddThing(mutator.below(40), name);
                    ++odd;
                } else {
                    const QByteArray bytes = mutator.picture(sound);
                    folder.put(name, bytes);
                    names << name;
                    shown += iconfile::decode(bytes).isNull() ? 0 : 1;
                }
            }
            names << "good.png";
            MenuTreeModel model(
                QStringList{"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m"},
                folder.path(""));
            model.insertRows(0, 1, {});
            const QModelIndex top = model.index(0, 0);
            model.insertRows(0, names.size(), top);
            for (int row = 0; row < names.size(); ++row) {
                model.setData(model.index(row, 1, top), "модуль");
                model.setData(model.index(row, 4, top), names[row]);
            }
            QTreeView view;
            view.setModel(&model);
            view.expandAll();
            view.resize(300, 40 * names.size());
            view.show();
            QElapsedTimer all;
            all.start();
            bool isShown = false;
            while (!isShown && all.elapsed() < 30'000) {
                QElapsedTimer turn;
                turn.start();
                view.viewport()->repaint();
                QCoreApplication::processEvents();
                longest = std::max(longest, turn.elapsed());
                isShown = hasColor(view, good);
                QTest::qWait(1);
            }
            QVERIFY2(isShown, "a sound picture is not shown after hostile ones");
            QVERIFY2(!hasColor(view, outside), "a picture outside of the folder is shown");
        }
        qInstallMessageHandler(previousHandler);
        const long taken = peakMemoryKiB() - before;
        qInfo(
            "%d icons, %d of them no files, %d still pictures; longest turn %lld ms, %ld MiB more",
            wanted, odd, shown, longest, taken / 1024);
        QVERIFY2(longest < longestTurnMs, qPrintable(QString::number(longest)));
        QVERIFY2(taken < mostMemoryKiB, qPrintable(QString::number(taken)));
    }
};

QTEST_MAIN(TestTrialIcons)
#include "tst_trial_icons.moc"
