#include "apps/admin/demo/Demo.h"
#include "apps/admin/Failure.h"
#include "apps/admin/Output.h"
#include "apps/admin/ProgressLine.h"
#include "apps/admin/Verb.h"
#include "apps/admin/verbs/BaseFolders.h"
#include "frame/StdText.h"
#include "frame/Text.h"

namespace orvo::admin {

namespace {

constexpr int64_t largestScale = 10000000;

void demoOptions(OptionList& options) {
    progressOption(options);
    options.append({QStringLiteral("scale"),
                    Text::tr("Вырастить до N ресурсов и N элементов меню (от %1 до %2).")
                        .arg(demoElements)
                        .arg(largestScale),
                    QStringLiteral("N")});
}

int64_t readScale(const Invocation& call) {
    const std::string text = call.value("scale");
    bool good = false;
    const qlonglong scale = QString::fromStdString(text).toLongLong(&good);
    if (!good || scale < demoElements || scale > largestScale)
        throw Failure(StdText::tr("--scale «") + text + StdText::tr("» не число от ") +
                      std::to_string(demoElements) + StdText::tr(" до ") +
                      std::to_string(largestScale));
    return scale;
}

/// Users and extensions may be there already; anything else is somebody's work.
void requireUnused(store::MaintainedStore& store) {
    const std::string work = findWork(store, false);
    if (!work.empty())
        throw Failure(
            StdText::tr("образцовая установка не записана: в хранилище уже есть данные (") + work +
            ")");
}

int run(const Invocation& call) {
    const int64_t scale = call.has("scale") ? readScale(call) : 0;
    const auto store = call.open();
    requireUnused(*store);
    makeBaseFolders(*store);
    DemoBuilder builder(*store);
    builder.build();
    if (scale) {
        ProgressLine progress(call, StdText::tr("заполнение"));
        growDemo(*store, builder.numbers(), scale - demoResources, scale - demoElements,
                 std::ref(progress));
    }
    out(StdText::tr("образцовая установка записана: ресурсов ") +
        std::to_string(scale ? scale : demoResources) + StdText::tr(", элементов меню ") +
        std::to_string(scale ? scale : demoElements));
    return Done;
}

} // namespace

const Verb demoVerb = {
    "demo",
    "[--scale N] [--progress]",
    QT_TRANSLATE_NOOP("orvo", "Заполнить новое хранилище образцовой установкой"),
    QT_TRANSLATE_NOOP("orvo", "Придуманный газопровод: рабочие столы в папках, меню, ресурсы всех "
                              "видов, формы с файлами,\n"
                              "значки, пользователи, две блокировки каждого из двух пользователей "
                              "и одна форма без папки.\n"
                              "Хранилище, в котором уже есть данные, не меняется. Прерванное "
                              "заполнение не продолжается:\n"
                              "его начинают заново на новом хранилище."),
    0,
    0,
    demoOptions,
    run,
};

} // namespace orvo::admin
