#include "apps/formview/Content.h"

#include "apps/formview/Fitted.h"
#include "apps/formview/FormFilter.h"
#include "apps/formview/FormMark.h"
#include "apps/formview/PdfView.h"
#include "frame/RecordText.h"
#include "frame/Text.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHash>
#include <QImageReader>
#include <QLabel>
#include <QMetaProperty>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QTextBrowser>
#include <QUiLoader>

#include <algorithm>

namespace orvo::formview {

namespace {

constexpr int largestPictureSide = 16384;   // a picture's header may claim anything
constexpr qint64 largestPicture = 64 << 20; // pixels

bool isBearable(const QSize& size, int side) {
    return size.width() <= side && size.height() <= side &&
           qint64{size.width()} * size.height() <= largestPicture;
}

std::unique_ptr<QWidget> scrolled(QWidget* content, const QSize& least) {
    auto area = std::make_unique<QScrollArea>();
    area->setFrameShape(QFrame::NoFrame);
    content->setMinimumSize(content->minimumSize().expandedTo(least));
    area->setWidgetResizable(true);
    area->setWidget(content);
    return area;
}

/// The pictures of a directory that are small enough to be parts of a form.
class Pictures {
public:
    explicit Pictures(const QString& directory) : m_directory(directory) {}

    bool contains(const QString& name) {
        constexpr int side = 4096;
        if (name.isEmpty() || name.contains(QLatin1Char('/')))
            return false;
        const auto known = m_known.constFind(name);
        if (known != m_known.constEnd())
            return *known;
        const QFileInfo file(m_directory.filePath(name));
        bool isGood = file.isFile() && !file.isSymLink();
        if (isGood) {
            QImageReader reader(file.filePath());
            isGood = reader.canRead() && reader.format() != "svgz" && reader.size().isValid() &&
                     isBearable(reader.size(), side);
        }
        m_known.insert(name, isGood);
        return isGood;
    }

private:
    const QDir m_directory;
    QHash<QString, bool> m_known;
};

/// A parameter is a property of the form, for its style sheets, and the value of the widget that
/// bears its name.
void setParameters(QWidget& form, const Document& document) {
    for (const auto& [name, value] : document.parameters) {
        const QByteArray property = name.toUtf8();
        if (form.metaObject()->indexOfProperty(property.constData()) < 0)
            form.setProperty(property.constData(), value);
        for (QWidget* widget : form.findChildren<QWidget*>(name)) {
            const QMetaProperty own = widget->metaObject()->userProperty();
            if (own.isValid() && own.isWritable())
                own.write(widget, value);
            else if (widget->metaObject()->indexOfProperty("value") >= 0)
                widget->setProperty("value", value);
            else if (widget->metaObject()->indexOfProperty("text") >= 0)
                widget->setProperty("text", value);
        }
    }
}

std::unique_ptr<QWidget> asForm(const Document& document, Content* content) {
    Pictures pictures(document.directory);
    const FilteredForm filtered =
        filterForm(document.bytes, [&](const QString& name) { return pictures.contains(name); });
    content->notice = filtered.refusal;
    if (!filtered.refusal.isEmpty())
        return nullptr;
    QBuffer buffer;
    buffer.setData(filtered.form);
    buffer.open(QIODevice::ReadOnly);
    QUiLoader loader;
    loader.clearPluginPaths(); // a stored form brings no code with it
    loader.setWorkingDirectory(document.directory);
    QWidget* form = loader.load(&buffer);
    if (!form) {
        content->notice = loader.errorString();
        return nullptr;
    }
    for (QTextBrowser* browser : form->findChildren<QTextBrowser*>())
        browser->setOpenLinks(false); // they lead to files
    if (!filtered.notes.isEmpty())
        content->notice =
            Text::tr("Показано не всё: %1.").arg(filtered.notes.join(QStringLiteral("; ")));
    const QSize size = form->size();
    form->setWindowFlags(Qt::Widget);
    setParameters(*form, document);
    if (document.isFitted && !form->layout())
        return std::make_unique<FittedForm>(form, size);
    return scrolled(form, size);
}

/// Null if the bytes are no picture, with a notice if they were to be one.
std::unique_ptr<QWidget> asPicture(const Document& document, Content* content) {
    QBuffer buffer;
    buffer.setData(document.bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    if (!reader.canRead()) {
        const QByteArray suffix = QFileInfo(document.name).suffix().toLower().toLatin1();
        if (QImageReader::supportedImageFormats().contains(suffix))
            content->notice = reader.errorString();
        return nullptr;
    }
    const QSize size = reader.size();
    if (!isBearable(size, largestPictureSide) || document.size > document.bytes.size()) {
        content->notice =
            Text::tr("рисунок %1 × %2 слишком велик").arg(size.width()).arg(size.height());
        return nullptr;
    }
    const QImage image = reader.read();
    if (image.isNull()) {
        content->notice = reader.errorString();
        return nullptr;
    }
    if (document.isFitted)
        return std::make_unique<FittedPicture>(image);
    auto label = std::make_unique<QLabel>();
    label->setAlignment(Qt::AlignCenter);
    label->setPixmap(QPixmap::fromImage(image));
    return scrolled(label.release(), image.size());
}

/// Null if the bytes are no PDF, with a notice if they begin as one.
std::unique_ptr<QWidget> asPdf(const Document& document, Content* content) {
    if (!looksLikePdf(document.bytes))
        return nullptr;
    auto view = std::make_unique<PdfView>();
    if (document.size <= document.bytes.size() && view->open(document.bytes, &content->notice))
        return view;
    if (content->notice.isEmpty())
        content->notice = Text::tr("файл слишком велик");
    return nullptr;
}

/// Bytes at the end that begin a letter of UTF-8 without ending it.
int unfinished(const QByteArray& utf8) {
    for (int count = 1; count <= 3 && count <= utf8.size(); ++count) {
        const auto byte = static_cast<unsigned char>(utf8[utf8.size() - count]);
        if (byte < 0x80 || byte >= 0xC0) {
            const int length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
            return length > count ? count : 0;
        }
    }
    return 0;
}

/// `isCut`: the last letter may not be whole.
QString decode(const QByteArray& bytes, bool isCut) {
    QByteArray utf8 = bytes.startsWith("\xEF\xBB\xBF") ? bytes.mid(3) : bytes;
    if (isCut)
        utf8.chop(unfinished(utf8));
    const QString text = QString::fromUtf8(utf8);
    return text.toUtf8() == utf8 ? text
                                 : fromCodePage(bytes.constData(), static_cast<int>(bytes.size()));
}

/// The layout of a line takes time and memory for each letter of it, seen or not, and so does each
/// line of a text. False in `isWhole` if there were too many.
QString inShortLines(const QString& text, bool* isWhole) {
    constexpr int longest = 2000;
    constexpr int mostLines = 50000;
    int lines = 0;
    QString result;
    result.reserve(text.size() + text.size() / longest);
    int length = 0;
    for (const QChar letter : text) {
        length = letter == QLatin1Char('\n') ? 0 : length + 1;
        if (length > longest && !letter.isLowSurrogate()) {
            result += QLatin1Char('\n');
            length = 1;
        }
        if (length <= 1 && ++lines > mostLines) {
            *isWhole = false;
            break;
        }
        result += letter;
    }
    return result;
}

std::unique_ptr<QWidget> asText(const Document& document) {
    constexpr int most = 1 << 20;
    constexpr int dumped = 4096;
    const QByteArray& bytes = document.bytes;
    QString text;
    if (bytes.contains('\0')) {
        text = Text::tr("Двоичный файл, %1 байт\n\n").arg(document.size);
        for (int row = 0; row < std::min<int>(bytes.size(), dumped); row += 16)
            text += QString::fromLatin1(bytes.mid(row, 16).toHex(' ')) + QLatin1Char('\n');
    } else {
        bool isWhole = document.size <= most;
        text = inShortLines(decode(bytes.left(most), bytes.size() > most), &isWhole);
        if (!isWhole)
            text += Text::tr("\n… показано только начало");
    }
    auto view = std::make_unique<QPlainTextEdit>();
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    view->setPlainText(text);
    view->setReadOnly(true);
    view->setFrameShape(QFrame::NoFrame);
    return view;
}

} // namespace

Content makeContent(const Document& document) {
    Content content;
    QDir::setCurrent(document.directory); // style sheets name files below it
    if (looksLikeForm(document.bytes, document.name))
        content.widget = asForm(document, &content);
    else if (content.widget = asPdf(document, &content);
             !content.widget && content.notice.isEmpty())
        content.widget = asPicture(document, &content);
    if (!content.widget) {
        content.isDamaged = !content.notice.isEmpty();
        if (content.isDamaged)
            content.notice = Text::tr("Файл «%1» повреждён и показан как есть: %2")
                                 .arg(document.name, content.notice);
        content.widget = asText(document);
    }
    return content;
}

} // namespace orvo::formview
