// SPDX-License-Identifier: MIT
#include "Platform/RouteMonitor.h"

#include <array>
#include <cerrno>

#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

// The kernel's macros cast as C does.
#pragma GCC diagnostic ignored "-Wold-style-cast"

namespace orvane {

namespace {

struct alignas(nlmsghdr) Buffer : std::array<char, 32768> {};

// -1 where the kernel refuses.
int netlinkSocket(unsigned groups) {
    const int descriptor = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
    sockaddr_nl own{};
    own.nl_family = AF_NETLINK;
    own.nl_groups = groups;
    if (descriptor < 0 || ::bind(descriptor, reinterpret_cast<sockaddr *>(&own), sizeof own) == 0)
        return descriptor;
    ::close(descriptor);
    return -1;
}

bool askForRoutes(int descriptor) {
    struct {
        nlmsghdr header;
        rtmsg route;
    } request{};
    request.header.nlmsg_len = NLMSG_LENGTH(sizeof(rtmsg));
    request.header.nlmsg_type = RTM_GETROUTE;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.route.rtm_family = AF_UNSPEC;
    return ::send(descriptor, &request, sizeof request, 0) == ssize_t(sizeof request);
}

// Where a default route leads; 0 for every other route and for one that leads nowhere.
int interfaceOf(const nlmsghdr *message) {
    const auto *route = static_cast<const rtmsg *>(NLMSG_DATA(message));
    const bool internet = route->rtm_family == AF_INET || route->rtm_family == AF_INET6;
    if (!internet || route->rtm_dst_len != 0 || route->rtm_type != RTN_UNICAST ||
        (route->rtm_flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN)) != 0)
        return 0;
    auto left = int(RTM_PAYLOAD(message));
    for (const rtattr *part = RTM_RTA(route); RTA_OK(part, left); part = RTA_NEXT(part, left)) {
        if (part->rta_type == RTA_OIF)
            return *static_cast<const int *>(RTA_DATA(part));
        // Of several ways at once, the first stands for all.
        if (part->rta_type == RTA_MULTIPATH)
            return static_cast<const rtnexthop *>(RTA_DATA(part))->rtnh_ifindex;
    }
    return 0;
}

std::optional<std::set<int>> readRoutes(int descriptor) {
    std::set<int> interfaces;
    Buffer buffer;
    // The kernel has the answer ready: there is no waiting.
    for (;;) {
        const ssize_t size = ::recv(descriptor, buffer.data(), buffer.size(), 0);
        if (size <= 0)
            return std::nullopt;
        auto left = unsigned(size);
        for (auto *message = reinterpret_cast<const nlmsghdr *>(buffer.data()); NLMSG_OK(message, left);
             message = NLMSG_NEXT(message, left)) {
            if (message->nlmsg_type == NLMSG_DONE)
                return interfaces;
            if (message->nlmsg_type == NLMSG_ERROR)
                return std::nullopt;
            const int found = message->nlmsg_type == RTM_NEWROUTE ? interfaceOf(message) : 0;
            if (found > 0)
                interfaces.insert(found);
        }
    }
}

std::optional<std::set<int>> defaultInterfaces() {
    const int descriptor = netlinkSocket(0);
    if (descriptor < 0)
        return std::nullopt;
    const auto interfaces = askForRoutes(descriptor) ? readRoutes(descriptor) : std::nullopt;
    ::close(descriptor);
    return interfaces;
}

} // namespace

RouteMonitor::RouteMonitor(std::chrono::milliseconds settle) {
    m_settle.setSingleShot(true);
    m_settle.setInterval(settle);
    connect(&m_settle, &QTimer::timeout, this, &RouteMonitor::look);
}

RouteMonitor::~RouteMonitor() {
    m_news.reset();
    if (m_socket >= 0)
        ::close(m_socket);
}

void RouteMonitor::start() {
    m_socket = netlinkSocket(RTMGRP_LINK | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE);
    if (m_socket >= 0) {
        m_news = std::make_unique<QSocketNotifier>(m_socket, QSocketNotifier::Read);
        connect(m_news.get(), &QSocketNotifier::activated, this, &RouteMonitor::skipNews);
    }
    QTimer::singleShot(0, this, &RouteMonitor::look);
}

// Only that there is news matters, also where it was too much to be kept.
void RouteMonitor::skipNews() {
    Buffer buffer;
    ssize_t size = 0;
    do
        size = ::recv(m_socket, buffer.data(), buffer.size(), 0);
    while (size > 0 || (size < 0 && errno == ENOBUFS));
    m_settle.start();
}

void RouteMonitor::look() {
    auto waysOut = defaultInterfaces();
    if (m_reported && waysOut == m_waysOut)
        return;
    m_reported = true;
    m_waysOut = std::move(waysOut);
    Q_EMIT pathUpdate(m_waysOut && m_waysOut->empty() ? Status::unsatisfied : Status::satisfied);
}

} // namespace orvane
