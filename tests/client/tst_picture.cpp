// What a picture of the window shows (--screenshot).
#include "apps/client/ModuleTabs.h"
#include "tests/client/RunningClient.h"

#include <QFileInfo>
#include <QHeaderView>

using namespace orvo;
using namespace orvo::test;

namespace {

/// Where the columns of a tree end, if that is beyond its edge.
QString beyondTheEdge(const QTreeView& tree) {
    const QHeaderView& header = *tree.header();
    int right = 0;
    for (int column = 0; column < header.count(); ++column)
        if (!header.isSectionHidden(column))
            right = std::max(right, header.sectionPosition(column) + header.sectionSize(column));
    return right <= tree.viewport()->width() ? QString()
                                             : QString("%1: %2 of %3")
                                                   .arg(tree.objectName())
                                                   .arg(right)
                                                   .arg(tree.viewport()->width());
}

} // namespace

class TestPicture : public QObject {
    Q_OBJECT
private slots:
    void allColumnsAreOnIt() {
        const QTemporaryDir folder;
        const QString file = folder.filePath("window.png");
        const RunningClient running(file);
        running.client->window()->tabs()->setCurrentIndex(1);
        const QTreeView& resources = *running.view("tvRes");
        QVERIFY(resources.isVisible());
        running.client->takeScreenshot();
        QTRY_VERIFY(QFileInfo::exists(file));
        QVERIFY(resources.header()->count() - resources.header()->hiddenSectionCount() > 2);
        QCOMPARE(beyondTheEdge(resources), QString());
    }
};

QTEST_MAIN(TestPicture)
#include "tst_picture.moc"
