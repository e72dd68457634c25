// What any program may put on the clipboard, pasted into both editors: payloads that an editor has
// made, changed at random. Nothing is written but what the payload says when it is read, nothing
// that was there changes but by a cut, trees show what the store holds, and the log tells of all.
// ORVO_TRIAL_ROUNDS is the number of pastes in each editor.
#include "Trial.h"

#include "frame/Records.h"
#include "menu/ElementWalk.h"
#include "menu/MenuPayload.h"
#include "platform/mdx/MdxBuild.h"
#include "tests/menu/OperationsProbe.h"
#include "tests/resources/ResProbe.h"
#include "tests/store/LogReplay.h"

#include <QClipboard>
#include <QMimeData>

#include <random>

using namespace orvo;
using namespace orvo::test;
using orvo::menu::menuMime;
using orvo::menu::MenuPayload;
using orvo::resources::resourcesMime;

namespace {

constexpr int pastesOfAStore = 100; ///< then a fresh one: each paste makes it larger

void putOnClipboard(const char* format, const QByteArray& bytes) {
    auto* mime = new QMimeData; // the clipboard's
    mime->setData(format, bytes);
    QGuiApplication::clipboard()->setMimeData(mime);
}

QByteArray onClipboard(const char* format) {
    const QMimeData* offered = QGuiApplication::clipboard()->mimeData();
    return offered ? offered->data(format) : QByteArray();
}

class PasteProbe : public ResProbe {
public:
    using OrvoResources::on_actCut_triggered;
    using OrvoResources::on_actPaste_triggered;
    using ResProbe::ResProbe;
};

class Mutator {
public:
    explicit Mutator(unsigned from) : m_random(from) {}
    int below(int most) { return int(m_random() % unsigned(std::max(1, most))); }

    /// One of these, changed in a few places, or not at all.
    QByteArray payload(const QVector<QByteArray>& samples, const QStringList& keys) {
        QByteArray bytes = samples[below(samples.size())];
        for (int changes = below(4); changes > 0; --changes)
            change(bytes, samples, keys);
        return bytes;
    }

private:
    void change(QByteArray& bytes, const QVector<QByteArray>& samples, const QStringList& keys) {
        const int at = below(bytes.size());
        const int length = below(64);
        const int first = bytes.indexOf('\n');
        const int second = bytes.indexOf('\n', first + 1);
        switch (below(10)) {
        case 0:
            if (!bytes.isEmpty())
                bytes[at] = char(m_random());
            break;
        case 1:
            bytes.truncate(at);
            break;
        case 2:
            bytes.remove(at, length);
            break;
        case 3:
            bytes.insert(at, bytes.mid(below(bytes.size()), length));
            break;
        case 4: { // a number, where one may be
            const quint32 numbers[] = {
                0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFF, static_cast<quint32>(m_random())};
            const quint32 number = numbers[below(7)];
            bytes.replace(at, 4, reinterpret_cast<const char*>(&number), 4);
            break;
        }
        case 5: { // the end of another
            const QByteArray& other = samples[below(samples.size())];
            bytes = bytes.left(at) + other.mid(below(other.size()));
            break;
        }
        case 6: // another number before the keys
            if (first >= 0)
                bytes.replace(0, first, QByteArray::number(below(6) - 1));
            break;
        case 7: // other keys
        case 8:
            if (first >= 0 && second > first) {
                QByteArray named;
                for (int count = below(6); count > 0; --count)
                    named += keys[below(keys.size())].toUtf8() + ';';
                bytes.replace(first + 1, second - first - 1, named);
            }
            break;
        default:
            for (char& byte : bytes)
                if (below(50) == 0)
                    byte = char(m_random());
        }
    }
    std::mt19937 m_random;
};

using Rows = QMap<QString, QMap<QString, QString>>; ///< fields of the records by key

Rows rowsOf(store::Store& store, const char* table) {
    CMDArray array;
    const store::Status status = store.fetch(table, array.array);
    if (!status.ok())
        qFatal("%s", status.text.c_str());
    Rows rows;
    for (int32_t i = 0; const MDRData* record = MDARec(array.array, 0, i); ++i) {
        QMap<QString, QString> fields;
        for (int field = 0; field < array.array->fieldCount; ++field) {
            const auto name = QString::fromLatin1(mdx::fieldName(MDRFldByNum(array.array, field)));
            fields[name] = textOf(record, name.toLatin1().constData());
        }
        rows[textOf(record, "KeyLink").toLower()] = fields;
    }
    return rows;
}

/// What is wrong with the store, whatever was pasted.
QStringList faults(const std::string& url) {
    store::Status status;
    const auto store = store::openMaintained(url, {"boss", false}, &status);
    std::vector<std::string> damages;
    if (status.ok())
        status = store->integrity(&damages);
    if (!status.ok())
        return {QString::fromStdString(status.text)};
    QStringList found = store::test::replayDifferences(*store);
    for (const std::string& damage : damages)
        found << QString::fromStdString(damage);
    return found;
}

template <class Model>
void addKeys(const Model& model, const QModelIndex& parent, QStringList* keys) {
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        *keys << model.getItemKeyLink(index).toLower();
        addKeys(model, index, keys);
    }
}

template <class Model>
QStringList keysShown(const Model& model) {
    QStringList keys;
    addKeys(model, {}, &keys);
    keys.sort();
    return keys;
}

} // namespace

class TestTrialPastes : public QObject {
    Q_OBJECT
private slots:
    void menuElements() {
        const int wanted = rounds(300);
        int written = 0;
        int deleted = 0;
        for (int done = 0; done < wanted;) {
            TestStore store;
            fillPlant(store);
            TestHost host(store);
            OperationsEditor editor(host);
            editor.openDesck("armop");
            QVector<QByteArray> samples;
            const auto copy = [&](std::initializer_list<const char*> rows) {
                editor.selectElements(rows);
                editor->on_actCopyMenuElement_triggered();
                samples << onClipboard(menuMime);
                QByteArray cut = samples.last();
                samples << cut.replace(0, cut.indexOf('\n'), QByteArray::number(MenuPayload::Cut));
            };
            copy({"shema"});
            copy({"glubzhe"});
            copy({"grafiki", "propal"});
            copy({"trend", "calc", "form"});
            Rows before = rowsOf(host.ownStore(), "Menu");
            for (int i = 0; i < pastesOfAStore && done < wanted; ++i, ++done) {
                const QStringList present = before.keys();
                QStringList keys = present;
                keys << "armop"
                     << ""
                     << "nobody"
                     << "MenuRootNode" << QString(300, 'k');
                const QByteArray bytes = m_mutator.payload(samples, keys);
                {
                    // Pasted before the editor is told of it, or a cut is taken off the clipboard.
                    QSignalBlocker untold(QGuiApplication::clipboard());
                    if (m_mutator.below(2) != 0)
                        untold.unblock();
                    putOnClipboard(menuMime, bytes);
                }
                // The folder may be gone with a cut.
                const QString target = present[m_mutator.below(present.size())];
                editor.view("tvMenu")->setCurrentIndex(editor->m_menuModel->findIndexByKey(
                    m_mutator.below(8) == 0 ? "MenuRootNode" : target));
                editor->on_actPasteMenuElement_triggered();
                host.deliver(*editor.module);

                const Rows after = rowsOf(host.ownStore(), "Menu");
                MenuPayload read;
                const bool readable = read.read(bytes);
                QStringList offered; // what a record may have of the payload
                for (int32_t n = 0; readable && n < recordCount(read.table); ++n) {
                    const MDRData* record = MDARec(read.table.array, 0, n);
                    offered << textOf(record, "caption") + '|' + textOf(record, "MenuResourceKey");
                    // A folder that comes with the one above it bears its caption as `parent`.
                    if (orvo::menu::isFolderRecord(record))
                        offered << "|";
                }
                int made = 0;
                for (auto row = after.begin(); row != after.end(); ++row) {
                    if (before.contains(row.key())) {
                        QCOMPARE(*row, before[row.key()]); // nothing that was there changes
                        continue;
                    }
                    ++made;
                    QCOMPARE(row->value("FolderKey"), QString("armop"));
                    const QString own = row->value("caption") + '|' + row->value("MenuResourceKey");
                    QVERIFY2(offered.contains(own), qPrintable(own));
                }
                QVERIFY2(made <= offered.size(),
                         qPrintable(QString("%1 of %2").arg(made).arg(offered.size())));
                const int gone = before.size() + made - after.size();
                QVERIFY(gone == 0 || (readable && read.cut));
                written += made;
                deleted += gone;
                before = after;
                if (before.isEmpty())
                    break;
            }
            // What an editor that is opened now shows.
            TestHost another(store);
            OperationsEditor fresh(another);
            fresh.openDesck("armop");
            QCOMPARE(keysShown(*editor->m_menuModel), keysShown(*fresh->m_menuModel));
            QCOMPARE(faults(store.url()), QStringList());
        }
        qInfo("%d pastes, %d elements written, %d deleted by cuts", wanted, written, deleted);
    }

    void resources() {
        const int wanted = rounds(300);
        int moved = 0;
        for (int done = 0; done < wanted;) {
            TestStore store;
            fillCatalogue(store);
            TestHost host(store);
            EditorUnderTest<PasteProbe> editor(host, "Resources");
            QVERIFY(editor.start());
            QTreeView* tree = editor.view("tvRes");
            tree->expandAll();
            Rows folders = rowsOf(host.ownStore(), "MenuResourceFolder");
            Rows items = rowsOf(host.ownStore(), "MenuResource");
            const QStringList keys = folders.keys() + items.keys();
            const QStringList foreign = {"", "nobody", "MenuRootNode", QString(300, 'k'),
                                         "mod;fun"};
            QVector<QByteArray> samples;
            for (const QString& key : keys) {
                tree->setCurrentIndex(editor->m_resModel->findIndexByKey(key));
                editor->on_actCut_triggered();
                if (const QByteArray cut = onClipboard(resourcesMime); !cut.isEmpty())
                    samples << cut;
            }
            QVERIFY(samples.size() > 5);
            for (int i = 0; i < pastesOfAStore && done < wanted; ++i, ++done) {
                const QByteArray bytes = m_mutator.payload(samples, keys + foreign);
                putOnClipboard(resourcesMime, bytes);
                tree->setCurrentIndex(
                    editor->m_resModel->findIndexByKey(keys[m_mutator.below(keys.size())]));
                editor->on_actPaste_triggered();
                if (boxStands(*editor.module)) // refused, in words
                    editor.module->m_popMessageBox->hide();
                host.deliver(*editor.module);

                const auto compare = [&](const Rows& before, const Rows& after, const char* link) {
                    if (after.keys() != before.keys())
                        return QString("records came or went");
                    for (auto row = after.begin(); row != after.end(); ++row) {
                        QMap<QString, QString> expected = before[row.key()];
                        if (*row == expected)
                            continue;
                        ++moved;
                        expected[link] = row->value(link);
                        if (*row != expected || !bytes.toLower().contains(row.key().toUtf8()))
                            return row.key() + " is another";
                    }
                    return QString();
                };
                const Rows foldersNow = rowsOf(host.ownStore(), "MenuResourceFolder");
                const Rows itemsNow = rowsOf(host.ownStore(), "MenuResource");
                QCOMPARE(compare(folders, foldersNow, "ParentKey"), QString());
                QCOMPARE(compare(items, itemsNow, "MenuResourceFolderKey"), QString());
                folders = foldersNow;
                items = itemsNow;
                for (const QString& key : folders.keys()) { // no folder is within itself
                    QString up = key;
                    for (int depth = 0; !up.isEmpty(); ++depth) {
                        QVERIFY2(depth <= folders.size(), qPrintable(key));
                        up = folders.value(up).value("ParentKey").toLower();
                    }
                }
            }
            TestHost another(store);
            EditorUnderTest<PasteProbe> fresh(another, "Resources");
            QVERIFY(fresh.start());
            // Rows that are no records are those of every tree, and the one above orphans, which
            // stays when the last of them has been given a folder.
            const QStringList now = keysShown(*fresh->m_resModel) << "wrongfolder";
            for (const QString& key : keysShown(*editor->m_resModel))
                QVERIFY2(now.contains(key) || folders.contains(key) || items.contains(key),
                         qPrintable(key));
            QCOMPARE(faults(store.url()), QStringList());
        }
        qInfo("%d pastes, %d resources and folders moved", wanted, moved);
    }

private:
    Mutator m_mutator{seed()};
};

QTEST_MAIN(TestTrialPastes)
#include "tst_trial_pastes.moc"
