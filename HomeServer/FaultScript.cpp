// SPDX-License-Identifier: MIT
#include "HomeServer/FaultScript.h"

#include <algorithm>

namespace orvane::homeserver {

void FaultScript::delay(const QByteArray &method, const QString &pathPrefix, int milliseconds, int count) {
    m_rules.append({method, pathPrefix, {Kind::Delay, milliseconds, 0, {}}, count});
}

void FaultScript::drop(const QByteArray &method, const QString &pathPrefix, int count) {
    m_rules.append({method, pathPrefix, {Kind::Drop, 0, 0, {}}, count});
}

void FaultScript::duplicate(const QByteArray &method, const QString &pathPrefix, int count) {
    m_rules.append({method, pathPrefix, {Kind::Duplicate, 0, 0, {}}, count});
}

void FaultScript::answerWith(const QByteArray &method, const QString &pathPrefix, int status,
                             const QByteArray &body, int count) {
    m_rules.append({method, pathPrefix, {Kind::AnswerWith, 0, status, body}, count});
}

void FaultScript::loseAnswer(const QByteArray &method, const QString &pathPrefix, int count) {
    m_rules.append({method, pathPrefix, {Kind::LoseAnswer, 0, 0, {}}, count});
}

std::optional<FaultScript::Fault> FaultScript::take(const QByteArray &method, const QString &path) {
    const auto rule = std::ranges::find_if(m_rules, [&](const Rule &candidate) {
        return (candidate.method.isEmpty() || candidate.method == method) &&
               path.startsWith(candidate.pathPrefix);
    });
    if (rule == m_rules.end())
        return std::nullopt;
    Fault fault = rule->fault;
    if (--rule->count <= 0)
        m_rules.erase(rule);
    return fault;
}

} // namespace orvane::homeserver
