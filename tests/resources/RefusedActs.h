// RefusedActs.h: saves of the clients at work, and those that fail: for want of a right, at a lock,
// with a connection that breaks, under a key that is taken.
#ifndef ORVO_TESTS_RESOURCES_REFUSEDACTS_H
#define ORVO_TESTS_RESOURCES_REFUSEDACTS_H

#include "platform/store/WaitPolicy.h"
#include "tests/resources/WorkingScene.h"

namespace orvo::test {

class RefusedActs {
public:
    explicit RefusedActs(WorkingScene& scene) : m_scene(scene) {}

    static void save(MenuPart& part) {
        QMetaObject::invokeMethod(&part.probe(), "on_save_pressed");
    }
    static void save(ResPart& part) { part.probe().m_btnSave->click(); }

    template <class Part>
    void saveAsItIs(Part& part) {
        m_scene.chances.say("save");
        save(part);
    }

    struct Impatient : store::WaitPolicy {
        bool keepWaiting() override { return ++waits < 3; }
        int waits = 0;
    };

    template <class Part>
    void saveRefused(Part& part) {
        if (part.isAtRest())
            return;
        // A locked file keeps its writer waiting for seconds.
        const bool file = m_scene.faults.name() == "sqlite";
        const auto failing = m_scene.chances.chance(file ? 3 : 20) ? EngineersKind::Locked
                             : m_scene.chances.chance(40)          ? EngineersKind::NoRight
                             : m_scene.chances.chance(50)          ? EngineersKind::RequestLost
                                                                   : EngineersKind::AnswerLost;
        if (!m_scene.faults.begin(failing))
            return;
        m_scene.chances.say(QString("save, to fail by %1").arg(failing));
        static const char* const names[] = {"saves at a lock", "saves without right",
                                            "saves whose request is lost",
                                            "saves whose answer is lost"};
        ++m_scene.figures[names[failing]];
        {
            // What is not locked ends by itself, at whatever pace.
            Impatient patience;
            const store::WaitPolicyScope scope(failing == EngineersKind::Locked ? &patience
                                                                                : nullptr);
            save(part);
        }
        m_scene.faults.end();
    }
    /// Whether that key is to be taken now: an edit whose save was refused may be saved again.
    bool takes(const QString& key) {
        if (m_taken.contains(key))
            return false;
        m_taken.insert(key);
        return true;
    }
    void saveDuplicate(MenuPart& part) {
        const MenuProbe& module = part.probe();
        const QString desck = module.m_desckModel->getItemKeyLink(module.m_editDesckIndex);
        const bool isElement = module.m_editMode == MenuProbe::NewElement;
        const bool isDesck = module.m_editMode == MenuProbe::NewDesck && !desck.isEmpty();
        if ((!isElement && !isDesck) || !takes(isElement ? module.m_editMenuKey : desck))
            return;
        if (isElement)
            m_scene.store.insert("Menu", {{"KeyLink", module.m_editMenuKey},
                                          {"FolderKey", QString("d1")},
                                          {"caption", QString("taken")},
                                          {"order_", 0}});
        else
            m_scene.store.insert("MenuFolder", {{"KeyLink", desck},
                                                {"ParentKey", QString("p1")},
                                                {"caption", QString("taken")},
                                                {"order_", QString("2000")},
                                                {"isFolder", false}});
        m_scene.chances.say("save under a key that is taken: " + module.m_editMenuKey + desck);
        ++m_scene.figures["saves of duplicates"];
        save(part);
    }
    void saveDuplicate(ResPart& part) {
        WritingProbe& module = part.probe();
        if (module.m_editState != NewRow)
            return;
        const bool folder =
            part.model().itemIsFolder(part.model().findIndexByKey(module.m_editKey));
        if (folder || !takes(module.m_editKey))
            return;
        m_scene.store.insert("MenuResource", {{"KeyLink", module.m_editKey},
                                              {"MenuResourceFolderKey", QString("trends")},
                                              {"type_", 1},
                                              {"name_", m_scene.chances.word(100, 100000)},
                                              {"caption", QString("taken")}});
        m_scene.chances.say("save under a key that is taken: " + module.m_editKey);
        ++m_scene.figures["saves of duplicates"];
        save(part);
    }

    WorkingScene& m_scene;
    QSet<QString> m_taken; ///< keys under which a save was made to fail
};

} // namespace orvo::test

#endif
