#include "apps/admin/demo/Demo.h"

#include <cstdio>

namespace orvo::admin {

std::vector<std::pair<std::string, std::string>>
demoFormFiles(const std::string& form, const std::string& caption, const std::string& sample) {
    const std::string design = replaced(demoFile("forms/" + sample + ".ui"), "{title}", caption);
    const std::string note = caption + "\n\nОбразцовая форма. Числа на ней придуманы.\n";
    if (form.empty() || form.back() != '_')
        return {{form, design}, {form + ".txt", note}};
    // A form known by a handle: the other files bear its name without the mark.
    const std::string stem = form.substr(0, form.size() - 1);
    return {{form, "Форма: " + caption + "\n"},
            {stem + ".ui", design},
            {stem + ".txt", note},
            {stem + ".png", demoFile("forms/overview.png")},
            {stem + ".svg", demoFile("forms/overview.svg")}};
}

std::string demoReport(int day) {
    std::string text = "Час;P вход, МПа;P выход, МПа;T, °C;Расход, тыс. м³\n";
    for (int hour = 0; hour < 24; ++hour) {
        const uint64_t bits = mixed(static_cast<uint64_t>(day * 24 + hour));
        char line[96];
        std::snprintf(line, sizeof line, "%02d:00;%d,%02d;%d,%02d;%d,%d;%d\n", hour, 5,
                      static_cast<int>(bits % 60), 7, static_cast<int>(bits / 60 % 60),
                      14 + static_cast<int>(bits / 3600 % 6), static_cast<int>(bits / 21600 % 10),
                      1650 + static_cast<int>(bits / 216000 % 200));
        text += line;
    }
    return text;
}

} // namespace orvo::admin
