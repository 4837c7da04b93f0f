#pragma once

#include <QCoreApplication>
#include <QTest>

#include <type_traits>

/// A test class of a suite: a program that has those of a whole folder and runs the one that its first
/// argument names.
class SuiteEntry
{
public:
    using Run = int (*)(int count, char **words);

    /// The name is that of the file, without its folder and ending.
    SuiteEntry(const char *file, Run run);
};

/// Runs all of a test class within an application of that type; within none where it is void.
template <class Test, class Application = void>
int runTest(int count, char **words)
{
    if constexpr (std::is_void_v<Application>) {
        Test test;
        return QTest::qExec(&test, count, words);
    } else {
        Application application(count, words);
        application.setAttribute(Qt::AA_Use96Dpi, true);
        Test test;
        return QTest::qExec(&test, count, words);
    }
}

/// Stands at the end of a file instead of a main(): QUORVEL_TEST(TestThing, QCoreApplication), or without an
/// application QUORVEL_TEST(TestThing).
#define QUORVEL_TEST(Test, ...)                                                                              \
    static const SuiteEntry suiteEntryOf##Test(__FILE__, runTest<Test __VA_OPT__(, ) __VA_ARGS__>);
