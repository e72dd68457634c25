#include "frame/IconCache.h"

#include "platform/client/IconFile.h"
#include "platform/client/IconLoader.h"

#include <QIconEngine>
#include <QPainter>

#include <algorithm>

namespace orvo {

namespace {

class FileIconEngine : public QIconEngine {
public:
    FileIconEngine(std::shared_ptr<IconLoader> loader, std::shared_ptr<IconPicture> picture,
                   QIcon instead)
        : m_loader(std::move(loader))
        , m_picture(std::move(picture))
        , m_instead(std::move(instead)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        noteWidget(painter->device());
        m_loader->refresh(m_picture);
        shown().paint(painter, rect, Qt::AlignCenter, mode, state);
    }

    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        // The room is kept, so that a row does not jump when its picture comes.
        return m_picture->isKnown ? shown().actualSize(size, mode, state) : size;
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        constexpr int timeoutMs = 250;
        m_loader->refresh(m_picture);
        m_loader->wait(m_picture, timeoutMs);
        return shown().pixmap(size, mode, state);
    }

    QIconEngine* clone() const override {
        return new FileIconEngine(m_loader, m_picture, m_instead);
    }

private:
    const QIcon& shown() const {
        return m_picture->isKnown && m_picture->icon.isNull() ? m_instead : m_picture->icon;
    }
    void noteWidget(QPaintDevice* device) {
        if (!device || device->devType() != QInternal::Widget)
            return;
        auto* widget = static_cast<QWidget*>(device);
        auto& widgets = m_picture->shownOn;
        if (std::find(widgets.begin(), widgets.end(), widget) == widgets.end())
            widgets.emplace_back(widget);
    }

    const std::shared_ptr<IconLoader> m_loader;
    const std::shared_ptr<IconPicture> m_picture;
    const QIcon m_instead;
};

} // namespace

IconCache::IconCache() = default;
IconCache::~IconCache() = default;

QIcon IconCache::resource(const QString& path) {
    const auto known = m_resources.constFind(path);
    return known != m_resources.constEnd() ? *known : *m_resources.insert(path, QIcon(path));
}

QIcon IconCache::file(const QString& folder, const QString& name) {
    return file(folder, name, {});
}

QIcon IconCache::file(const QString& folder, const QString& name, const QIcon& instead) {
    if (name.size() > iconfile::maxNameSize)
        return instead;
    if (!m_loader)
        m_loader = IconLoader::shared();
    return QIcon(new FileIconEngine(m_loader, m_loader->picture(folder, name), instead));
}

} // namespace orvo
