// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

namespace orvane {

/// Points HOME, the XDG folders and the session bus of this process into a temporary folder, so that no test
/// ever reads or writes what belongs to the person who runs it. Made before the application object.
class OwnFolders {
public:
    OwnFolders();

    /// Without a trailing slash.
    QString path() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};

/// Runs this executable again as `--child arguments…`, which calls the test class's `child(arguments)`
/// instead of its tests. `environment` lists "NAME=value" entries on top of this process's own.
struct ChildResult {
    bool crashed = false;
    int exitCode = 0;
    QString output;
    QString errors;
};
ChildResult runChild(const QStringList &arguments, const QStringList &environment = {});

/// The main function of a test without windows, in folders of its own.
template <typename T>
int runTest(int argc, char **argv) {
    if constexpr (requires { T::child(QStringList()); }) {
        if (argc > 1 && qstrcmp(argv[1], "--child") == 0) {
            const QCoreApplication application(argc, argv);
            return T::child(QCoreApplication::arguments().mid(2));
        }
    }
    const OwnFolders folders;
    QCoreApplication application(argc, argv);
    T test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace orvane

#define ORVANE_TEST_MAIN(TYPE)                                                                               \
    int main(int argc, char **argv) {                                                                        \
        return orvane::runTest<TYPE>(argc, argv);                                                            \
    }
