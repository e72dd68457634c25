// Every operation that promises to leave things unchanged on failure, with each of its allocations
// failing in turn.
#include "MdxTest.h"

#include <QtTest>

#include <cstdlib>
#include <functional>
#include <new>

using namespace mdxtest;

// The library allocates through the replaceable operators, which are those of this program.
namespace {

constexpr long never = -1;
long allocationsUntilFailure = never;

void* allocate(size_t size, size_t alignment = alignof(std::max_align_t)) {
    if (allocationsUntilFailure != never && allocationsUntilFailure-- == 0)
        return nullptr; // this one alone: the counter is at `never` again
    return std::aligned_alloc(alignment, (size / alignment + 1) * alignment);
}

void* allocateOrThrow(size_t size, size_t alignment = alignof(std::max_align_t)) {
    if (void* block = allocate(size, alignment))
        return block;
    throw std::bad_alloc();
}

} // namespace

void* operator new(size_t size) {
    return allocateOrThrow(size);
}
void* operator new[](size_t size) {
    return allocateOrThrow(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new(size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, size_t(alignment));
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block, size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete(void* block, size_t, std::align_val_t) noexcept {
    std::free(block);
}

namespace {

/// Field 0 of some records with every state: posted, edited, with a text of its own block.
ArrayPtr table() {
    ArrayPtr array = makeArray(allTypes());
    addKey(array.get(), "name", MDX_KEY_UNIQUE);
    addKey(array.get(), "type_;name", MDX_KEY_MULTI);
    for (int i = 0; i < 130; ++i) // two leaves
        post(array.get(), {"name " + std::to_string(i)});
    return array;
}

MDRData* first(const ArrayPtr& array) {
    return orvo::mdx::postedRecord(array.get(), 0);
}

const std::string longText(40000, 'x'), longerText(90000, 'y');

/// What one row of the test does: `prepare` makes the arrays, `run` is the operation, whose
/// allocations fail; what `state` tells must then be as before.
struct Operation {
    ArrayPtr array, other;
    MDRData* record = nullptr;
    std::function<int()> run;
    std::string state() const {
        return dump(array.get()) + (other ? dump(other.get()) : std::string());
    }
    std::string broken() const {
        return orvo::mdx::check(array.get()) + (other ? orvo::mdx::check(other.get()) : "");
    }
};

using Prepare = std::function<void(Operation&)>;

struct ParamDeleter {
    void operator()(MDXCliParam* param) const { orvo::mdx::paramFree(param); }
};
using ParamPtr = std::unique_ptr<MDXCliParam, ParamDeleter>;

ParamPtr oneBlock() {
    const MdxType types[] = {MDX_BLOCK};
    return ParamPtr(orvo::mdx::paramCreate(types, 1));
}

} // namespace

Q_DECLARE_METATYPE(Prepare)

class TestMdxMemory : public QObject {
    Q_OBJECT

private slots:
    void aFailedAllocationChangesNothing_data() {
        QTest::addColumn<Prepare>("prepare");
        const auto row = [](const char* name, Prepare prepare) {
            QTest::newRow(name) << std::move(prepare);
        };
        row("a key is added", [](Operation& op) {
            op.run = [&op] { return addKey(op.array.get(), "type_;flag", MDX_KEY_MULTI); };
        });
        row("a unique key is added", [](Operation& op) {
            op.run = [&op] { return addKey(op.array.get(), "name;flag", MDX_KEY_UNIQUE); };
        });
        row("a key becomes unique", [](Operation& op) {
            op.run = [&op] { return addKey(op.array.get(), "type_;name", MDX_KEY_UNIQUE); };
        });
        row("an array is copied", [](Operation& op) {
            op.other = makeArray({{"old", MDX_TEXT}});
            addKey(op.other.get(), "old", MDX_KEY_MULTI);
            post(op.other.get(), {"content"});
            op.run = [&op] { return MDACopy(op.other.get(), op.array.get(), 1); };
        });
        row("a field is added", [](Operation& op) {
            op.array = makeArray({{"old", MDX_TEXT}});
            op.run = [&op] { return orvo::mdx::addField(op.array.get(), "new", MDX_DATE); };
        });
        row("a record is made", [](Operation& op) {
            op.run = [&op] {
                for (int i = 0; i < 2000; ++i)
                    if (!MDARecNew(op.array.get()))
                        return int(MDX_E_MEMORY);
                return int(MDX_OK);
            };
        });
        row("a new record is posted", [](Operation& op) {
            op.record = MDARecNew(op.array.get());
            setText(op.record, 0, longText);
            op.run = [&op] { return MDARecPost(op.record, nullptr); };
        });
        row("an edited record is posted", [](Operation& op) {
            setText(op.record, 0, longText);
            op.run = [&op] { return MDARecPost(op.record, nullptr); };
        });
        row("a record is deleted",
            [](Operation& op) { op.run = [&op] { return MDARecDel(op.record); }; });
        row("an edited record is deleted", [](Operation& op) {
            setText(op.record, 0, longText);
            op.run = [&op] { return MDARecDel(op.record); };
        });
        row("a number is set",
            [](Operation& op) { op.run = [&op] { return set(op.record, 1, integerValue(5)); }; });
        row("a value becomes NULL",
            [](Operation& op) { op.run = [&op] { return set(op.record, 0, nullValue()); }; });
        row("a text grows beside its head", [](Operation& op) {
            op.run = [&op] { return setText(op.record, 0, "a longer name"); };
        });
        row("a text gets a block of its own",
            [](Operation& op) { op.run = [&op] { return setText(op.record, 0, longText); }; });
        row("a text outgrows its block", [](Operation& op) {
            setText(op.record, 0, longText);
            MDARecPost(op.record, nullptr);
            op.run = [&op] { return setText(op.record, 0, longerText); };
        });
        row("a block is set", [](Operation& op) {
            op.run = [&op] { return set(op.record, 4, blockValue(longText)); };
        });
        row("a reply takes the content", [](Operation& op) {
            op.run = [&op] {
                const ParamPtr reply = oneBlock();
                return reply ? orvo::mdx::paramSetContent(reply.get(), 0, op.array.get())
                             : int(MDX_E_MEMORY);
            };
        });
        row("a reply gets a text", [](Operation& op) {
            op.run = [&op] {
                const ParamPtr reply = oneBlock();
                return reply ? orvo::mdx::paramSetBlock(reply.get(), 0, longText.data(),
                                                        longText.size())
                             : int(MDX_E_MEMORY);
            };
        });
    }
    void aFailedAllocationChangesNothing() {
        QFETCH(Prepare, prepare);
        bool succeeded = false;
        for (long allocations = 0; !succeeded; ++allocations) {
            Operation op;
            op.array = table();
            op.record = first(op.array);
            prepare(op);
            const std::string before = op.state();
            allocationsUntilFailure = allocations;
            const int status = op.run();
            allocationsUntilFailure = never;
            succeeded = status == MDX_OK;
            QCOMPARE(op.broken(), std::string());
            if (succeeded) {
                QVERIFY2(allocations > 0, "nothing was allocated, so nothing was tested");
                break;
            }
            QCOMPARE(status, int(MDX_E_MEMORY));
            QCOMPARE(op.state(), before);
            QCOMPARE(op.run(), int(MDX_OK)); // and with memory it goes on as if nothing had been
            QCOMPARE(op.broken(), std::string());
        }
    }

    // An unpacked array builds its keys when they are first asked for.
    void aKeyThatCannotBeBuiltFindsNothingAndIsBuiltLater() {
        const Bytes image = packed(table().get());
        for (long allocations = 0;; ++allocations) {
            const ArrayPtr array = makeArray({});
            QCOMPARE(MDAUnpackN(array.get(), image.block.get(), image.length), 0);
            allocationsUntilFailure = allocations;
            const MDRData* record = MDARec(array.get(), 1, 0);
            allocationsUntilFailure = never;
            QCOMPARE(orvo::mdx::check(array.get()), std::string());
            QVERIFY(MDARec(array.get(), 1, 0));
            if (record) {
                QVERIFY(allocations > 0);
                return;
            }
        }
    }

    void anArrayThatCannotBeUnpackedIsEmpty() {
        const ArrayPtr source = table();
        const Bytes image = packed(source.get());
        for (long allocations = 0;; ++allocations) {
            const ArrayPtr array = makeArray({{"old", MDX_TEXT}});
            addKey(array.get(), "old", MDX_KEY_MULTI);
            post(array.get(), {"content"});
            allocationsUntilFailure = allocations;
            const int status = MDAUnpackN(array.get(), image.block.get(), image.length);
            allocationsUntilFailure = never;
            QCOMPARE(orvo::mdx::check(array.get()), std::string());
            if (status == MDX_OK) {
                QCOMPARE(dump(array.get()), dump(source.get()));
                return;
            }
            QCOMPARE(status, int(MDX_E_MEMORY));
            QCOMPARE(int(array->fieldCount), 0);
            QCOMPARE(array->keyCount, 0u);
        }
    }

    void aReplyThatCannotBeUnpackedLeavesTheArrayEmpty() {
        const ArrayPtr source = table();
        void* image = nullptr;
        const uint32_t length = orvo::mdx::packReply(source.get(), true, &image);
        const std::unique_ptr<void, BlockDeleter> freed(image);
        const ParamPtr reply = oneBlock();
        QCOMPARE(orvo::mdx::paramSetBlock(reply.get(), 0, image, length), 0);
        const char* block = nullptr;
        QCOMPARE(MDRGetTextPtr(MDRFldByNum(reply->array, 0), reply->record, &block), 0);
        for (long allocations = 0;; ++allocations) {
            const ArrayPtr array = makeArray({{"old", MDX_TEXT}});
            post(array.get(), {"content"});
            allocationsUntilFailure = allocations;
            const int status = MDXArrayUnPack(array.get(), block, 1);
            allocationsUntilFailure = never;
            QCOMPARE(orvo::mdx::check(array.get()), std::string());
            if (status == MDX_OK) {
                QVERIFY(allocations > 0);
                QCOMPARE(orvo::mdx::postedCount(array.get()), 130u);
                return;
            }
            QCOMPARE(status, int(MDX_E_MEMORY));
            QCOMPARE(int(array->fieldCount), 0);
        }
    }

    void anArrayThatCannotBeCreatedIsNone() {
        for (long allocations = 0;; ++allocations) {
            MDArray* array = nullptr;
            allocationsUntilFailure = allocations;
            const int status = MDACreate(&array, 0);
            allocationsUntilFailure = never;
            const ArrayPtr freed(array);
            if (status == MDX_OK) {
                QVERIFY(allocations > 0);
                return;
            }
            QCOMPARE(status, int(MDX_E_MEMORY));
            QVERIFY(!array);
        }
    }

    void aWriterThatRunsOutOfMemorySaysSoAndLeavesTheArraySound() {
        for (long allocations = 0;; ++allocations) {
            const ArrayPtr array = table();
            int status = MDX_OK;
            {
                allocationsUntilFailure = allocations;
                orvo::mdx::RecordWriter writer(array.get());
                for (int i = 0; i < 130; ++i) {
                    const std::string name = "written " + std::to_string(i);
                    writer.begin();
                    writer.text1251(0, name.data(), name.size());
                    writer.end();
                }
                status = writer.finish();
                allocationsUntilFailure = never;
            }
            QCOMPARE(orvo::mdx::check(array.get()), std::string());
            if (status == MDX_OK) {
                QVERIFY(allocations > 0);
                QCOMPARE(orvo::mdx::postedCount(array.get()), 260u);
                return;
            }
            QCOMPARE(status, int(MDX_E_MEMORY));
        }
    }

    void aDescriptionThatCannotBeMadeIsEmpty() {
        const ArrayPtr array = table();
        const Bytes bytes = raw(first(array));
        MDRData alone;
        QCOMPARE(MDRRecSet(&alone, bytes.block.get()), 0);
        MDRType type;
        MDRTypInit(&type);
        QCOMPARE(MDRTypGen(&type, "NCI", &alone), 0);
        allocationsUntilFailure = 0;
        const int status = MDRTypGen(&type, "NCI", &alone);
        allocationsUntilFailure = never;
        QCOMPARE(status, int(MDX_E_MEMORY));
        QCOMPARE(int(type.fieldCount), 0);
        QVERIFY(!type.fields);
    }
};

QTEST_APPLESS_MAIN(TestMdxMemory)
#include "tst_mdx_memory.moc"
