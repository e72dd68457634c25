#include "FakeSession.h"

#include "frame/Records.h"
#include "platform/mdx/MdxBuild.h"

struct COrvoCliSes::Private {
    SessionScript& script;
};

COrvoCliSes::COrvoCliSes(std::unique_ptr<Private> p) : d(std::move(p)) {}
COrvoCliSes::~COrvoCliSes() = default;

std::unique_ptr<COrvoCliSes> makeSession(SessionScript& script) {
    return std::make_unique<COrvoCliSes>(
        std::unique_ptr<COrvoCliSes::Private>(new COrvoCliSes::Private{script}));
}

int COrvoCliSes::PacketExec(const char* name, const void* data, int length, MDXCliParam** prm) {
    SessionScript& s = d->script;
    s.request = name;
    s.data = data ? QByteArray(static_cast<const char*>(data), length) : QByteArray();
    if (!s.sent)
        return 0;
    const MdxType type = MDX_INTEGER;
    *prm = orvo::mdx::paramCreate(&type, 1);
    ++s.alive;
    return 1;
}

int COrvoCliSes::WaitResult(MDXCliParam** prm, int timeout) {
    SessionScript& s = d->script;
    s.timeout = timeout;
    if (s.nullReply || s.reply) {
        orvo::mdx::paramFree(*prm);
        *prm = std::exchange(s.reply, nullptr);
        if (!*prm)
            --s.alive;
    }
    return s.waited;
}

void COrvoCliSes::PrmFree(MDXCliParam* prm) {
    if (!prm)
        return;
    orvo::mdx::paramFree(prm);
    ++d->script.freed;
    --d->script.alive;
}

int COrvoCliSes::SqlUpdate(const char* table, MDArray* records, bool always, MDXCliParam** prm) {
    QString text = table;
    for (uint32_t i = 0; i < orvo::mdx::postedCount(records); ++i) {
        const MDRData* record = orvo::mdx::postedRecord(records, i);
        QStringList fields;
        for (int n = 0; n < records->fieldCount; ++n) {
            const MDRField field = MDRFldByNum(records, n);
            uint8_t marked = 0;
            MDRIsUser(field, record, &marked);
            if (!marked)
                continue;
            QString value = "NULL";
            if (orvo::mdx::fieldType(field) == MDX_TEXT && !orvo::isNull(record, field))
                value = '"' + orvo::textOf(record, field) + '"';
            else if (!orvo::isNull(record, field))
                value = QString::number(orvo::integerOf(record, field));
            fields.append(QString("%1=%2").arg(orvo::mdx::fieldName(field), value));
        }
        text += QString(" %1:%2").arg(orvo::mdx::recordFlags(record)).arg(fields.join(','));
    }
    d->script.updates.append(always ? text : "not always " + text);
    if (prm) {
        const MdxType type = MDX_INTEGER;
        *prm = orvo::mdx::paramCreate(&type, 1);
        ++d->script.alive;
    }
    return 1;
}
