// SPDX-License-Identifier: MIT
#include "HomeServer/Operations/Router.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

QStringList patternOf(const char *path) {
    const QString text = QString::fromLatin1(path);
    const QString whole = text.startsWith(u'/') ? text.mid(1) : u"api/messenger/"_s + text;
    return whole.split(u'/');
}

bool isPlaceholder(const QString &segment) {
    return segment.startsWith(u'{');
}

bool fits(const QStringList &pattern, const QStringList &segments) {
    if (pattern.size() != segments.size())
        return false;
    for (qsizetype i = 0; i < pattern.size(); ++i)
        if (!isPlaceholder(pattern[i]) && pattern[i] != segments[i])
            return false;
    return true;
}

} // namespace

void Router::add(const char *method, const char *path, Operation operation, Access access) {
    m_routes.append({method, patternOf(path), access, std::move(operation), {}, false});
}

void Router::addUpload(const char *method, const char *path, Operation operation, Access access) {
    m_routes.append({method, patternOf(path), access, std::move(operation), {}, true});
}

void Router::addSlow(const char *method, const char *path, SlowOperation operation, Access access) {
    m_routes.append({method, patternOf(path), access, {}, std::move(operation), false});
}

void Router::addFrame(const char *type, const Operation &operation) {
    m_frames.insert(QString::fromLatin1(type), operation);
}

Router::Match Router::find(const QByteArray &method, const QStringList &segments) const {
    Match match;
    for (const Route &route : m_routes) {
        if (!fits(route.pattern, segments))
            continue;
        match.pathKnown = true;
        if (route.method != method)
            continue;
        match.route = &route;
        for (qsizetype i = 0; i < segments.size(); ++i)
            if (isPlaceholder(route.pattern[i]))
                match.parts.insert(route.pattern[i].mid(1).chopped(1), segments[i]);
        return match;
    }
    return match;
}

const Operation *Router::frame(const QString &type) const {
    const auto found = m_frames.constFind(type);
    return found == m_frames.constEnd() ? nullptr : &*found;
}

} // namespace orvane::homeserver
