// FolderWalk.h: how the loaders go down a tree of folders: depth first, in display order, without
// recursion, so that no depth of the data can exhaust the stack, and without following a circle.
#ifndef ORVO_FRAME_FOLDERWALK_H
#define ORVO_FRAME_FOLDERWALK_H

#include <QSet>
#include <QString>

#include <utility>
#include <vector>

namespace orvo {

/// Calls `enter(folder)` for `first` and every folder below it; `enter` gives the sub-folders as a
/// std::vector<Folder>. `keyOf(folder)` gives the folder's key: a folder whose key is that of one
/// of its own ancestors, without regard to case, is not entered.
template <class Folder, class KeyOf, class Enter>
void walkFolders(Folder first, KeyOf&& keyOf, Enter&& enter) {
    struct Step {
        Folder folder;
        QString key;
        bool leaves; ///< everything below the folder has been visited
    };
    QSet<QString> path;
    std::vector<Step> steps;
    const auto plan = [&](Folder folder) {
        QString key = keyOf(folder).toCaseFolded();
        steps.push_back({std::move(folder), std::move(key), false});
    };

    plan(std::move(first));
    while (!steps.empty()) {
        Step step = std::move(steps.back());
        steps.pop_back();
        if (step.leaves) {
            path.remove(step.key);
            continue;
        }
        if (path.contains(step.key))
            continue;
        path.insert(step.key);
        steps.push_back({Folder(), step.key, true});
        std::vector<Folder> below = enter(step.folder);
        for (auto folder = below.rbegin(); folder != below.rend(); ++folder)
            plan(std::move(*folder));
    }
}

} // namespace orvo

#endif
