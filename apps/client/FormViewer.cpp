#include "apps/client/FormViewer.h"

#include "platform/mdx/MdxBuild.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QImageReader>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QUiLoader>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>

namespace orvo::app {

namespace {

QWidget* scrolled(QWidget* content, const QSize& least) {
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    content->setMinimumSize(content->minimumSize().expandedTo(least));
    area->setWidgetResizable(true);
    area->setWidget(content);
    return area;
}

/// A Designer form, alive. Null if the bytes are none, with the reason in `damage` if they were to
/// be one.
QWidget* asForm(const QByteArray& bytes, const QString& name, const QString& directory,
                QString* damage) {
    const bool isNamed = name.endsWith(QLatin1String(".ui"), Qt::CaseInsensitive);
    const bool isMarked = bytes.left(4096).contains("<ui");
    if (!isNamed && !isMarked)
        return nullptr;
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QUiLoader loader;
    loader.clearPluginPaths(); // a stored form brings no code with it
    loader.setWorkingDirectory(directory);
    QWidget* form = loader.load(&buffer);
    if (!form) {
        // A text that merely mentions the mark is no form.
        const QByteArray start = bytes.left(4096).trimmed();
        if (isNamed || start.startsWith("<?xml") || start.startsWith("<ui"))
            *damage = loader.errorString();
        return nullptr;
    }
    const QSize size = form->size();
    form->setWindowFlags(Qt::Widget);
    return scrolled(form, size);
}

/// A picture. Null if the bytes are none, with the reason in `damage` if they were to be one.
QWidget* asPicture(const QByteArray& bytes, const QString& name, QString* damage) {
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    constexpr int largestSide = 16384; // a picture's header may claim anything
    if (!reader.canRead()) {
        const QByteArray suffix = QFileInfo(name).suffix().toLower().toLatin1();
        if (QImageReader::supportedImageFormats().contains(suffix))
            *damage = reader.errorString();
        return nullptr;
    }
    const QSize size = reader.size();
    if (size.width() > largestSide || size.height() > largestSide) {
        *damage =
            QStringLiteral("рисунок %1 × %2 слишком велик").arg(size.width()).arg(size.height());
        return nullptr;
    }
    const QImage image = reader.read();
    if (image.isNull()) {
        *damage = reader.errorString();
        return nullptr;
    }
    auto* label = new QLabel;
    label->setAlignment(Qt::AlignCenter);
    label->setPixmap(QPixmap::fromImage(image));
    return scrolled(label, image.size());
}

QString decode(const QByteArray& bytes) {
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars == 0 && state.remainingChars == 0)
        return text;
    return QString::fromStdString(
        mdx::toUtf8({bytes.constData(), static_cast<size_t>(bytes.size())}));
}

QWidget* asText(const QByteArray& bytes) {
    constexpr int most = 1 << 20;
    constexpr int dumped = 4096;
    QString text;
    if (bytes.contains('\0')) {
        text = QStringLiteral("Двоичный файл, %1 байт\n\n").arg(bytes.size());
        for (int row = 0; row < std::min(bytes.size(), dumped); row += 16)
            text += QString::fromLatin1(bytes.mid(row, 16).toHex(' ')) + QLatin1Char('\n');
    } else {
        text = decode(bytes.left(most));
        if (bytes.size() > most)
            text += QStringLiteral("\n… показан первый мегабайт");
    }
    auto* view = new QPlainTextEdit(text);
    view->setReadOnly(true);
    view->setFrameShape(QFrame::NoFrame);
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    return view;
}

/// A word above a view.
QWidget* withNotice(QWidget* view, const QString& notice) {
    auto* label = new QLabel(notice);
    label->setObjectName(QStringLiteral("damageLabel"));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMargin(8);
    label->setStyleSheet(QStringLiteral("background:#fbe9e7;color:#9c2a20"));
    auto* both = new QWidget;
    auto* column = new QVBoxLayout(both);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(label);
    column->addWidget(view, 1);
    return both;
}

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

} // namespace

QWidget* openForm(store::Store& store, const QString& request, QWidget* parent, QString* error) {
    QString name;
    std::vector<store::StoredFile> files;
    const store::Status status = find(store, request, &name, &files);
    if (!status.ok()) {
        *error = QStringLiteral("Форма «%1» не получена: %2")
                     .arg(name, QString::fromStdString(status.text));
        return nullptr;
    }
    if (files.empty()) {
        *error = QStringLiteral("Форма «%1» не найдена или не имеет файлов.").arg(name);
        return nullptr;
    }
    // Pictures that a Designer form names lie beside it.
    const QTemporaryDir beside;
    for (const store::StoredFile& file : files) {
        if (!beside.isValid() || !store::isPlainFileName(file.name))
            continue;
        QFile copy(beside.filePath(QString::fromStdString(file.name)));
        if (copy.open(QIODevice::WriteOnly))
            copy.write(file.bytes.data(), static_cast<qint64>(file.bytes.size()));
    }

    auto window = std::make_unique<QWidget>(parent, Qt::Window);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setObjectName(QStringLiteral("formWindow"));
    window->setWindowTitle(QStringLiteral("Форма — %1").arg(name));
    auto* tabs = new QTabWidget(window.get());
    tabs->setDocumentMode(true);
    tabs->setTabBarAutoHide(true);
    // The form itself is what the user came for.
    struct Rest {
        const store::StoredFile* file;
        QString damage;
    };
    std::vector<Rest> rest;
    for (const store::StoredFile& file : files) {
        const QString title = QString::fromStdString(file.name);
        QString damage;
        if (QWidget* form =
                asForm(QByteArray::fromStdString(file.bytes), title, beside.path(), &damage))
            tabs->addTab(form, title);
        else
            rest.push_back({&file, damage});
    }
    QStringList damaged;
    for (auto& [file, damage] : rest) {
        const QByteArray bytes = QByteArray::fromStdString(file->bytes);
        const QString title = QString::fromStdString(file->name);
        QWidget* view = damage.isEmpty() ? asPicture(bytes, title, &damage) : nullptr;
        if (!view)
            view = asText(bytes);
        if (!damage.isEmpty()) {
            view = withNotice(
                view,
                QStringLiteral("Файл «%1» повреждён и показан как есть: %2").arg(title, damage));
            damaged << title;
        }
        tabs->addTab(view, title);
    }
    if (!damaged.isEmpty())
        *error = QStringLiteral("Форма «%1»: повреждены файлы %2.")
                     .arg(name, damaged.join(QStringLiteral(", ")));
    tabs->setCurrentIndex(0);
    auto* fill = new QVBoxLayout(window.get());
    fill->setContentsMargins(0, 0, 0, 0);
    fill->addWidget(tabs);
    window->resize(tabs->sizeHint().expandedTo({640, 480}).boundedTo({1280, 900}));
    window->show();
    return window.release();
}

} // namespace orvo::app
