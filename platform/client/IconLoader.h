// IconLoader.h: reads the pictures of icons on a thread of its own and keeps them.
//
// All trees of the process share one loader, made with the first icon that lies on the disk and
// ended with the last model that shows one. Its functions are called on the GUI thread.
//
// Invariants; 2 and 3 are asserted in debug builds:
//   1 The GUI thread touches no file of an icon and decodes none.
//   2 A request is queued at most once; at most `maxQueued` wait, the latest first, since those are
//     on the screen. One that is dropped is made again by the next paint.
//   3 The pictures kept take at most `maxBytes`; a picture in use stays alive beyond that.
#ifndef ORVO_PLATFORM_CLIENT_ICONLOADER_H
#define ORVO_PLATFORM_CLIENT_ICONLOADER_H

#include <QCache>
#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>
#include <thread>
#include <vector>

namespace orvo {

/// The picture of one file, as far as it is known. Belongs to the GUI thread.
struct IconPicture {
    QIcon icon;                             ///< null: there is none
    bool isKnown = false;                   ///< false until the file was looked at
    bool isQueued = false;                  ///< somebody looks at the file, or will
    std::vector<QPointer<QWidget>> shownOn; ///< painted there since the last look
};

class IconLoader : public QObject {
    Q_OBJECT
public:
    static constexpr int maxBytes = 32 << 20;
    static constexpr int maxQueued = 256;

    static std::shared_ptr<IconLoader> shared();
    IconLoader();
    /// Waits for the file that is being read, but not for ever.
    ~IconLoader() override;

    /// The picture of a file; never null. Reading begins with `refresh`.
    std::shared_ptr<IconPicture> picture(const QString& folder, const QString& name);
    /// Has the file looked at again, on the other thread. When its picture is another one than
    /// before, the widgets of `shownOn` are repainted.
    void refresh(const std::shared_ptr<IconPicture>& picture);
    /// Waits for the end of a look at the file, so long at most.
    void wait(const std::shared_ptr<IconPicture>& picture, int milliseconds);

private:
    struct File;
    struct Work;
    void deliver();

    QCache<QString, std::shared_ptr<File>> m_files;
    std::shared_ptr<Work> m_work; ///< shared with the thread
    std::thread m_thread;
};

} // namespace orvo

#endif
