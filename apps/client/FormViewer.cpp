#include "apps/client/FormViewer.h"

#include "apps/client/FormView.h"
#include "apps/client/Look.h"
#include "apps/formview/FormMark.h"
#include "frame/Launch.h"
#include "frame/Text.h"

#include <QFile>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace orvo::app {

namespace {

/// The files of the longest form name that the request begins with.
store::Status find(store::Store& store, const QString& request, QString* name,
                   std::vector<store::StoredFile>* files) {
    int end = request.size();
    while (end > 0) {
        *name = request.left(end);
        files->clear();
        const store::Status status = store.formGet(name->toStdString(), true, files);
        if (!files->empty() || (!status.ok() && status.code != store::UnknownName))
            return status;
        end = request.lastIndexOf(QLatin1Char(';'), end - 1);
    }
    *name = request.section(QLatin1Char(';'), 0, 0);
    return {};
}

formview::Document makeDocument(const store::StoredFile& file, const QString& directory) {
    formview::Document document;
    document.name = QString::fromStdString(file.name);
    document.size = static_cast<qint64>(file.bytes.size());
    document.bytes =
        QByteArray(file.bytes.data(),
                   static_cast<int>(std::min<qint64>(document.size, formview::largestFile)));
    document.directory = directory;
    return document;
}

} // namespace

FormWindow::FormWindow(const QString& program, const QString& name,
                       const std::vector<store::StoredFile>& files, const Look& look,
                       const ProcessLimits& limits, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_tabs(new QTabWidget(this)) {
    setObjectName(QStringLiteral("formWindow"));
    setWindowTitle(Text::tr("Форма — %1").arg(oneLine(name)));
    m_tabs->setDocumentMode(true);
    m_tabs->setTabBarAutoHide(true);
    m_tabs->setElideMode(Qt::ElideMiddle);
    auto* fill = new QVBoxLayout(this);
    fill->setContentsMargins(0, 0, 0, 0);
    fill->addWidget(m_tabs);
    resize(640, 480);

    std::vector<formview::Document> documents;
    for (const store::StoredFile& file : files) {
        documents.push_back(makeDocument(file, m_beside.path()));
        documents.back().parameters = look.parameters;
        documents.back().isFitted = look.isFitted;
        if (!m_beside.isValid() || !store::isPlainFileName(file.name))
            continue;
        QFile copy(m_beside.filePath(documents.back().name));
        if (copy.open(QIODevice::WriteOnly))
            copy.write(file.bytes.data(), static_cast<qint64>(file.bytes.size()));
    }
    const auto companions =
        std::stable_partition(documents.begin(), documents.end(), [](const auto& document) {
            return formview::looksLikeForm(document.bytes, document.name);
        });
    if (look.isFormOnly && companions != documents.begin())
        documents.erase(companions, documents.end());
    for (formview::Document& document : documents) {
        const QString title = oneLine(document.name);
        auto* view = new FormView(program, std::move(document), limits);
        connect(view, &FormView::problem, this, &FormWindow::problem);
        connect(view, &FormView::shown, this, [this, view] { fit(view); });
        m_tabs->addTab(view, QString(title).replace(QLatin1Char('&'), QLatin1String("&&")));
    }
    m_tabs->setCurrentIndex(0);
    setFocusProxy(m_tabs->currentWidget());
    connect(m_tabs, &QTabWidget::currentChanged, this,
            [this] { setFocusProxy(m_tabs->currentWidget()); });
}

/// Once, as large as the first file likes it.
void FormWindow::fit(QWidget* view) {
    if (!std::exchange(m_isFitted, true))
        resize((size() - view->size() + view->sizeHint().boundedTo({1280, 900}))
                   .expandedTo({640, 480})
                   .boundedTo({1280, 900}));
}

FormWindow* openForm(store::Store& store, const QString& request, QWidget* parent, QString* error,
                     const QString& program, const ProcessLimits& limits) {
    QString name;
    std::vector<store::StoredFile> files;
    const store::Status status = find(store, request, &name, &files);
    if (!status.ok()) {
        *error =
            Text::tr("Форма «%1» не получена: %2").arg(name, QString::fromStdString(status.text));
        return nullptr;
    }
    if (files.empty()) {
        *error = Text::tr("Форма «%1» не найдена или не имеет файлов.").arg(name);
        return nullptr;
    }
    const LaunchParameters parameters = parseLaunchParameters(request.mid(name.size() + 1));
    return new FormWindow(program, name, files, {parameters.pairs.toVector()}, limits, parent);
}

} // namespace orvo::app
