#include "tests/client/HostileForms.h"

#include "tests/client/FormFixture.h"

namespace orvo::test {

namespace {

using Files = std::vector<store::StoredFile>;

store::StoredFile file(const char* name, const QByteArray& bytes) {
    store::StoredFile stored;
    stored.name = name;
    stored.bytes = bytes.toStdString();
    return stored;
}

QByteArray many(const char* text, int times) {
    return QByteArray(text).repeated(times);
}

QByteArray widget(const QByteArray& type, const QByteArray& content) {
    return "<widget class=\"" + type + "\" name=\"w\">" + content + "</widget>";
}

QByteArray property(const QByteArray& name, const QByteArray& type, const QByteArray& value) {
    return "<property name=\"" + name + "\"><" + type + ">" + value + "</" + type + "></property>";
}

QByteArray ui(const QByteArray& content, const QByteArray& rest = {}) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><ui version=\"4.0\">" + content + rest +
           "</ui>";
}

/// A form in a column of a window, so that its parts are laid out and painted.
QByteArray page(const QByteArray& content, const QByteArray& rest = {}) {
    return ui(widget("QWidget", "<layout class=\"QVBoxLayout\" name=\"l\"><item>" + content +
                                    "</item></layout>"),
              rest);
}

/// The table under construction.
struct Table {
    std::vector<HostileForm> rows;

    void add(const QByteArray& name, bool isUsual, std::function<Files()> make) {
        rows.push_back({name, std::move(make), isUsual});
    }
    /// One form whose text costs little to hold.
    void form(const QByteArray& name, const QByteArray& bytes, bool isUsual = false) {
        add(name, isUsual, [bytes] { return Files{file("a.ui", bytes)}; });
    }
    void large(const QByteArray& name, std::function<QByteArray()> make, bool isUsual = false) {
        add(name, isUsual, [make] { return Files{file("a.ui", make())}; });
    }
};

void addCounts(Table& table) {
    for (const char* count : {"100000", "10000000", "2000000000", "-1"})
        for (const char* name : {"rowCount", "columnCount"})
            table.form(QByteArray(name) + " " + count,
                       page(widget("QTableWidget", property(name, "number", count))),
                       count == QByteArray("2000000000") && name == QByteArray("rowCount"));
    table.large("30000 rows", [] { return page(widget("QTableWidget", many("<row/>", 30'000))); });
    table.large("200000 columns",
                [] { return page(widget("QTreeWidget", many("<column/>", 200'000))); });
    table.large("200000 entries",
                [] { return page(widget("QComboBox", many("<item/>", 200'000))); });
    for (const int count : {6000, 200'000})
        table.large(QByteArray::number(count) + " widgets", [count] {
            return ui(widget("QWidget", many("<widget class=\"QLabel\"/>", count)));
        });
    for (const int depth : {41, 1000, 30'000})
        table.large(
            "widgets nested " + QByteArray::number(depth) + " deep",
            [depth] {
                return ui(many("<widget class=\"QFrame\">", depth) + many("</widget>", depth));
            },
            depth == 30'000);
    for (const int depth : {39, 500, 30'000})
        table.large("boxes in tabs nested " + QByteArray::number(depth) + " deep", [depth] {
            const char* begin = "<widget class=\"QGroupBox\"><layout class=\"QVBoxLayout\"><item>";
            return ui(many(begin, depth) + many("</item></layout></widget>", depth));
        });
    table.large("tree rows nested 50000 deep", [] {
        return page(
            widget("QTreeWidget", "<column/>" + many("<item>", 50'000) + many("</item>", 50'000)));
    });
    for (const char* place : {"row", "column", "rowspan", "colspan"})
        for (const char* number : {"2000000000", "-7"})
            table.form(QByteArray("grid ") + place + " " + number,
                       ui(widget("QWidget", "<layout class=\"QGridLayout\"><item " +
                                                QByteArray(place) + "=\"" + number + "\">" +
                                                widget("QLabel", "") + "</item></layout>")),
                       place == QByteArray("row") && *number == '2');
    for (const char* type : {"QCalendarWidget", "QTextEdit", "QMdiArea", "QFontComboBox"})
        table.large(
            QByteArray("4900 of ") + type,
            [type] {
                return ui(widget("QWidget", "<layout class=\"QVBoxLayout\">" +
                                                many(QByteArray("<item><widget class=\"" +
                                                                QByteArray(type) + "\"/></item>")
                                                         .constData(),
                                                     4900) +
                                                "</layout>"));
            },
            *type == 'Q' && type[1] == 'C');
}

void addClasses(Table& table) {
    const auto custom = [](const QByteArray& name, const QByteArray& base) {
        return "<customwidget><class>" + name + "</class><extends>" + base +
               "</extends></customwidget>";
    };
    const auto declared = [&](const QByteArray& list) {
        return page(widget("A", ""), "<customwidgets>" + list + "</customwidgets>");
    };
    table.form("class that extends itself", declared(custom("A", "A")), true);
    table.form("two classes that extend each other", declared(custom("A", "B") + custom("B", "A")),
               true);
    table.form("three classes in a circle",
               declared(custom("A", "B") + custom("B", "C") + custom("C", "A")), true);
    table.form("Qt's own class that extends another", declared(custom("QWidget", "A")));
    QByteArray chain;
    for (int i = 0; i < 1000; ++i)
        chain += custom("A" + (i ? QByteArray::number(i) : ""), "A" + QByteArray::number(i + 1));
    table.form("chain of 1000 classes", declared(chain));
    for (const char* name : {"", "NoSuchWidget", "../../lib/x", "QWebEngineView", "QOpenGLWidget",
                             "QAxWidget", "QMainWindow", "QWizard", "QDockWidget", "QDialog"})
        table.form(QByteArray("class ") + name, page(widget(name, "")));
}

void addFiles(Table& table) {
    const QByteArrayList targets{"/dev/ptmx",      "/dev/zero",           "/dev/random",
                                 "/proc/self/mem", "../../../etc/passwd", "file:///dev/zero"};
    struct Carrier {
        const char* name;
        std::function<QByteArray(const QByteArray&)> make;
    };
    const std::vector<Carrier> carriers{
        {"picture",
         [](const QByteArray& path) {
             return widget("QLabel", property("pixmap", "pixmap", path));
         }},
        {"icon",
         [](const QByteArray& path) {
             return widget("QPushButton", property("icon", "iconset",
                                                   "<normaloff>" + path + "</normaloff>" + path));
         }},
        {"style sheet",
         [](const QByteArray& path) {
             return widget("QFrame",
                           property("styleSheet", "string", "border-image: url(" + path + ")"));
         }},
        {"hidden in a style sheet",
         [](const QByteArray& path) {
             return widget("QFrame",
                           property("styleSheet", "string", "image: u\\72l('" + path + "')"));
         }},
        {"rich text",
         [](const QByteArray& path) {
             return widget("QLabel", property("text", "string", "&lt;img src='" + path + "'>"));
         }},
        {"background of rich text",
         [](const QByteArray& path) {
             return widget("QTextEdit",
                           property("html", "string",
                                    "&lt;body style=\"background-image:url(" + path + ")\">a"));
         }},
        {"address", [](const QByteArray& path) {
             return widget("QTextBrowser",
                           property("source", "url", "<string>" + path + "</string>"));
         }}};
    for (const Carrier& carrier : carriers)
        for (const QByteArray& target : targets)
            table.form(QByteArray(carrier.name) + " " + target, page(carrier.make(target)),
                       target == "/dev/zero" && (carrier.name == QByteArray("picture") ||
                                                 carrier.name == QByteArray("rich text")));
    table.add("picture beside it of 30000 x 30000", true, [] {
        QImage image(30'000, 30'000, QImage::Format_Mono);
        image.fill(0);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        return Files{file("a.ui", page(widget("QLabel", property("pixmap", "pixmap", "b.png")))),
                     file("b.png", bytes)};
    });
    table.add("picture of 12000 x 12000", false,
              [] { return Files{file("a.png", png(12'000, 12'000))}; });
    table.add("picture of 15000 x 15000", false,
              [] { return Files{file("a.png", png(15'000, 4'000))}; });
    table.add("SVG that uses itself", true, [] {
        return Files{file("a.svg", "<svg xmlns=\"http://www.w3.org/2000/svg\" "
                                   "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"9\" "
                                   "height=\"9\"><g id=\"a\"><use xlink:href=\"#a\"/></g></svg>")};
    });
    table.add("SVG nested 100000 deep", false, [] {
        return Files{file("a.svg", "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" "
                                   "height=\"9\">" +
                                       many("<g>", 100'000) + many("</g>", 100'000) + "</svg>")};
    });
}

void addTexts(Table& table) {
    struct Place {
        const char* type;
        const char* name;
    };
    for (const Place& place :
         {Place{"QLabel", "text"}, Place{"QPushButton", "text"}, Place{"QLineEdit", "text"},
          Place{"QPlainTextEdit", "plainText"}, Place{"QTextEdit", "html"},
          Place{"QGroupBox", "title"}, Place{"QLabel", "toolTip"}, Place{"QFrame", "objectName"},
          Place{"QFrame", "styleSheet"}})
        table.large(
            QByteArray("a million letters in ") + place.type + " " + place.name,
            [place] {
                return page(
                    widget(place.type, property(place.name, "string", many("W", 1'000'000))));
            },
            place.name == QByteArray("plainText"));
    table.large("12 MiB of text", [] {
        return page(widget("QLabel", property("text", "string", many("x ", 6 << 20))));
    });
    for (const char* tag : {"div", "table&gt;&lt;tr&gt;&lt;td", "b", "ul&gt;&lt;li"})
        table.large(QByteArray("rich text nested ") + tag, [tag] {
            return page(
                widget("QTextEdit", property("html", "string",
                                             many(("&lt;" + QByteArray(tag) + "&gt;").constData(),
                                                  60'000 / (qstrlen(tag) > 5 ? 18 : 5)))));
        });
    for (const char* attribute :
         {"colspan=2000000000", "rowspan=99999", "width=2000000000", "cellpadding=99999999"})
        table.form(QByteArray("rich text table ") + attribute,
                   page(widget("QLabel", property("text", "string",
                                                  "&lt;table " + QByteArray(attribute) +
                                                      "&gt;&lt;tr&gt;&lt;td " + attribute +
                                                      "&gt;x&lt;/td&gt;&lt;/tr&gt;"))));
    table.add("text of a million letters", true,
              [] { return Files{file("a.txt", many("W", 1'000'000))}; });
    table.add("20 MiB of text", false, [] { return Files{file("a.txt", many("abc ", 5 << 20))}; });
    table.add("a million lines", false, [] { return Files{file("a.txt", many("\n", 1'000'000))}; });
    table.add("a million accents", false,
              [] { return Files{file("a.txt", "a" + many("\xcc\x81", 500'000))}; });
    table.add("a million changes of direction", false, [] {
        return Files{file("a.txt", many("\xe2\x80\xae"
                                        "a\xe2\x80\xac",
                                        150'000))};
    });
    for (const char* sheet : {"* { ", "/* ", "QLabel ", "* * * * * * { x: y } ", "@import url(a);"})
        table.large(QByteArray("60000 bytes of style sheet ") + sheet, [sheet] {
            return page(widget("QFrame", property("styleSheet", "string",
                                                  many(sheet, 60'000 / int(qstrlen(sheet))))));
        });
}

void addMarkup(Table& table) {
    QByteArray laughs = "<!DOCTYPE ui [<!ENTITY a \"haha\">";
    for (char level = 'b'; level < 'l'; ++level)
        laughs += QByteArray("<!ENTITY ") + level + " \"" +
                  many((QByteArray("&") + char(level - 1) + ";").constData(), 10) + "\">";
    table.form("billion laughs",
               laughs + "]><ui version=\"4.0\">" +
                   widget("QLabel", property("text", "string", "&k;")) + "</ui>",
               true);
    table.form("external entity", "<!DOCTYPE ui [<!ENTITY a SYSTEM \"file:///dev/zero\">]>"
                                  "<ui version=\"4.0\"><class>&a;</class></ui>");
    table.form("no end", "<ui version=\"4.0\"><widget class=\"QWidget\">");
    table.form("other root", "<html><widget class=\"QWidget\"/></html>");
    table.form("nothing in it", "<ui version=\"4.0\"/>", true);
    table.form("two windows", ui(widget("QWidget", "") + widget("QWidget", "")));
    table.form("zero bytes", ui(widget("QWidget", QByteArray(100, '\0'))));
    table.form("no UTF-8", ui(widget("QLabel", property("text", "string", "\xff\xfe\x80"))));
    table.large("attribute of a million letters",
                [] { return ui("<widget class=\"" + many("Q", 1'000'000) + "\"/>"); });
    table.large("100000 attributes", [] {
        QByteArray list;
        for (int i = 0; i < 100'000; ++i)
            list += " a" + QByteArray::number(i) + "=\"\"";
        return ui("<widget class=\"QWidget\"" + list + "/>");
    });
    table.large("100000 unknown elements nested",
                [] { return ui(many("<a>", 100'000) + many("</a>", 100'000)); });
    table.large("property nested 100000 deep", [] {
        return page(widget("QLabel", "<property name=\"text\">" + many("<a>", 100'000) +
                                         many("</a>", 100'000) + "</property>"));
    });
    table.large("12 MiB of comment", [] { return ui("<!--" + many("x", 12 << 20) + "-->"); });
    table.large("3 MiB of CDATA",
                [] { return ui("<class><![CDATA[" + many("x", 3 << 20) + "]]></class>"); });
    table.form("script", ui(widget("QWidget", "<script language=\"x\">while(true){}</script>")));
    table.form("resources of others",
               ui(widget("QWidget", ""), "<resources><include location=\"/dev/zero\"/></resources>"
                                         "<includes><include>/dev/zero</include></includes>"));
}

void addNumbers(Table& table) {
    const auto rect = [](const QByteArray& side) {
        return "<x>0</x><y>0</y><width>" + side + "</width><height>" + side + "</height>";
    };
    const auto size = [](const QByteArray& side) {
        return "<width>" + side + "</width><height>" + side + "</height>";
    };
    for (const char* number : {"2147483647", "16777215", "32767", "-2147483648", "1e300"}) {
        table.form(QByteArray("geometry ") + number,
                   ui(widget("QWidget", property("geometry", "rect", rect(number)))),
                   number == QByteArray("2147483647"));
        table.form(QByteArray("least size ") + number,
                   page(widget("QPushButton", property("minimumSize", "size", size(number)))));
        table.form(QByteArray("font ") + number,
                   page(widget("QLabel",
                               property("text", "string", "Wg") +
                                   property("font", "font",
                                            "<pointsize>" + QByteArray(number) + "</pointsize>"))),
                   number == QByteArray("32767"));
        table.form(
            QByteArray("icons of size ") + number,
            page(widget("QListWidget", property("iconSize", "size", size(number)) + "<item/>")));
        table.form(QByteArray("line width ") + number,
                   page(widget("QFrame", property("frameShape", "enum", "QFrame::Box") +
                                             property("lineWidth", "number", number) +
                                             property("midLineWidth", "number", number))));
        table.form(QByteArray("margin ") + number,
                   ui(widget("QWidget", "<layout class=\"QVBoxLayout\">" +
                                            property("leftMargin", "number", number) +
                                            property("spacing", "number", number) + "</layout>")));
    }
    const QByteArray range =
        property("minimum", "number", "-2147483648") + property("maximum", "number", "2147483647");
    table.form(
        "slider with a tick for each number",
        page(widget("QSlider", range + property("tickPosition", "enum", "QSlider::TicksBothSides") +
                                   property("tickInterval", "number", "1"))),
        true);
    table.form("dial with a notch for each number",
               page(widget("QDial", range + property("notchesVisible", "bool", "true") +
                                        property("singleStep", "number", "1"))));
    table.form("bar of all numbers", page(widget("QProgressBar", range)));
    table.form("digits",
               page(widget("QLCDNumber", property("digitCount", "number", "2000000000"))));
    table.form("decimals",
               page(widget("QDoubleSpinBox", property("decimals", "number", "2000000000") +
                                                 property("maximum", "double", "1e308") +
                                                 property("value", "double", "nan"))));
    for (const char* sheet : {"border: 2000000000px solid red", "min-width: 99999999px",
                              "font-size: 999999pt", "padding: -2000000000px"})
        table.form(QByteArray("style sheet ") + sheet,
                   page(widget("QPushButton", property("styleSheet", "string", sheet))));
}

void addConnections(Table& table) {
    const auto link = [](const QByteArray& sender, const QByteArray& signal,
                         const QByteArray& receiver, const QByteArray& slot) {
        return "<connection><sender>" + sender + "</sender><signal>" + signal +
               "</signal><receiver>" + receiver + "</receiver><slot>" + slot +
               "</slot></connection>";
    };
    const QByteArray box = "<widget class=\"QCheckBox\" name=\"a\">" +
                           property("text", "string", "click") + "</widget>";
    const auto linked = [&](const QByteArray& list) {
        return page(box, "<connections>" + list + "</connections>");
    };
    table.form("check box that clicks itself", linked(link("a", "clicked()", "a", "click()")),
               true);
    table.form("check box that toggles itself",
               linked(link("a", "toggled(bool)", "a", "toggle()")));
    table.form("widget that deletes itself", linked(link("a", "pressed()", "a", "deleteLater()")),
               true);
    table.form("widget that deletes itself, with blanks",
               linked(link("a", "pressed()", "a", " deleteLater( )")));
    table.form("window that closes", linked(link("a", "pressed()", "w", "close()")));
    table.large("100000 connections", [=] {
        return linked(many(link("a", "clicked()", "a", "toggle()").constData(), 100'000));
    });
}

} // namespace

std::vector<HostileForm> hostileForms() {
    Table table;
    addCounts(table);
    addClasses(table);
    addFiles(table);
    addTexts(table);
    addMarkup(table);
    addNumbers(table);
    addConnections(table);
    return table.rows;
}

} // namespace orvo::test
