#include "platform/store/PostgresUrl.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <libpq-fe.h>
#include <memory>

namespace orvo::store::postgres {

namespace {

/// What holds unless the address says otherwise. A server that has gone is noticed, and none is
/// waited for without end.
const std::pair<const char*, const char*> defaults[] = {
    {"fallback_application_name", "orvo"},  {"connect_timeout", "3"},
    {"target_session_attrs", "read-write"}, {"keepalives_idle", "10"},
    {"keepalives_interval", "5"},           {"keepalives_count", "3"},
    {"tcp_user_timeout", "20000"},
};

std::string escaped(const std::string& text, const char* also) {
    std::string out;
    for (const char c : text) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || std::string_view("-._~").find(c) < 4 ||
                           std::string_view(also).find(c) != std::string_view::npos ||
                           static_cast<unsigned char>(c) >= 0x80;
        if (plain) {
            out += c;
        } else {
            out += '%';
            out += "0123456789ABCDEF"[static_cast<unsigned char>(c) >> 4];
            out += "0123456789ABCDEF"[static_cast<unsigned char>(c) & 15];
        }
    }
    return out;
}

/// Whether the address can be taken apart in one way only. libpq finds a host or a database in what
/// a password with a "@", "/" or blank in it leaves over, and would name it in its messages.
bool isUnambiguous(const std::string& url) {
    const auto has = [](std::string_view text, const char* any) {
        return text.find_first_of(any) != std::string_view::npos;
    };
    for (const char c : url)
        if (static_cast<unsigned char>(c) <= ' ' || c == 0x7F)
            return false;
    std::string_view rest = std::string_view(url).substr(url.find("://") + 3);
    const size_t sign = rest.find('@');
    if (sign < rest.find('/')) // as libpq looks for the name of a user
        rest.remove_prefix(sign + 1);
    const std::string_view place = rest.substr(0, rest.find('?'));
    const std::string_view hosts = place.substr(0, place.find('/'));
    const std::string_view base = place.substr(hosts.size());
    if (has(hosts, "@=;&'\"!$()*+<>\\^`{|}") || (!base.empty() && has(base.substr(1), "@=;:&/'\"")))
        return false;
    // Behind a host, out of the brackets of one with colons of its own, there stands a number.
    for (size_t at = 0; at < hosts.size(); ++at) {
        if (hosts[at] == '[')
            at = std::min(hosts.find(']', at), hosts.size());
        else if (hosts[at] == ':' &&
                 hosts.find_first_not_of("0123456789", at + 1) < hosts.find(',', at + 1))
            return false;
    }
    return true;
}

std::vector<std::string> parts(const std::string& list) {
    std::vector<std::string> out;
    for (size_t at = 0; at <= list.size();) {
        const size_t end = std::min(list.find(',', at), list.size());
        out.push_back(list.substr(at, end - at));
        at = end + 1;
    }
    return out;
}

} // namespace

Status Url::parse(const std::string& url) {
    // libpq's own words would quote the address, and with it the password.
    const Status bad = {BadArguments,
                        StdText::tr("Непонятный адрес хранилища PostgreSQL; он имеет вид "
                                    "postgresql://ПОЛЬЗОВАТЕЛЬ@УЗЕЛ/БАЗА; особые знаки пишутся "
                                    "в нём кодом: @ как %40, / как %2F")};
    if (url.find('\0') != std::string::npos ||
        (!url.starts_with("postgresql://") && !url.starts_with("postgres://")) ||
        !isUnambiguous(url))
        return bad;
    struct Free {
        void operator()(PQconninfoOption* options) const { PQconninfoFree(options); }
        void operator()(char* text) const { PQfreemem(text); }
    };
    char* raw = nullptr;
    const std::unique_ptr<PQconninfoOption, Free> options(PQconninfoParse(url.c_str(), &raw));
    const std::unique_ptr<char, Free> error(raw);
    if (!options)
        return bad;
    m_options.clear();
    for (const PQconninfoOption* option = options.get(); option->keyword != nullptr; ++option) {
        if (option->val != nullptr)
            m_options.emplace_back(option->keyword, option->val);
    }
    for (const auto& [name, value] : defaults) {
        if (get(name).empty())
            set(name, value);
    }
    set("client_encoding", "UTF8");
    return {};
}

std::string Url::get(const std::string& option) const {
    for (const auto& [name, value] : m_options) {
        if (name == option)
            return value;
    }
    return {};
}

void Url::set(const std::string& option, std::string value) {
    for (auto& [name, present] : m_options) {
        if (name == option) {
            present = std::move(value);
            return;
        }
    }
    m_options.emplace_back(option, std::move(value));
}

std::string Url::displayName() const {
    std::string out = "postgresql://";
    if (const std::string user = get("user"); !user.empty())
        out += escaped(user, "") + "@";
    const std::string hosts = get("host").empty() ? get("hostaddr") : get("host");
    const std::string ports = get("port");
    const bool sockets = hosts.find('/') != std::string::npos;
    if (!sockets) {
        const std::vector<std::string> host = parts(hosts);
        const std::vector<std::string> port = parts(ports);
        for (size_t i = 0; i < host.size(); ++i) {
            const bool six = host[i].find(':') != std::string::npos;
            out += (i == 0 ? "" : ",") + (six ? "[" + host[i] + "]" : escaped(host[i], ""));
            const std::string& own = port.size() == 1 ? port[0] : i < port.size() ? port[i] : "";
            if (!own.empty())
                out += ":" + escaped(own, "");
        }
    }
    out += "/" + escaped(get("dbname"), "");
    if (sockets)
        out +=
            "?host=" + escaped(hosts, "/,") + (ports.empty() ? "" : "&port=" + escaped(ports, ","));
    return out;
}

std::string Url::withoutSecrets(std::string text) const {
    std::vector<std::string> secrets = {get("password"), get("sslpassword")};
    if (const char* environment = std::getenv("PGPASSWORD"))
        secrets.emplace_back(environment);
    for (const std::string& secret : secrets) {
        for (size_t at = 0; !secret.empty() && (at = text.find(secret, at)) != std::string::npos;)
            text.replace(at, secret.size(), "***");
    }
    text = validUtf8(std::move(text));
    std::string line;
    for (const char c : text) {
        const bool blank = static_cast<unsigned char>(c) <= ' ';
        if (!blank)
            line += c;
        else if (!line.empty() && line.back() != ' ')
            line += ' ';
    }
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    return line;
}

Url::Arrays Url::arrays() const {
    Arrays out;
    for (const auto& [name, value] : m_options) {
        out.names.push_back(name.c_str());
        out.values.push_back(value.c_str());
    }
    out.names.push_back(nullptr);
    out.values.push_back(nullptr);
    return out;
}

} // namespace orvo::store::postgres
