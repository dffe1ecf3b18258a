#pragma once

#include <QTest>

namespace quillmate
{

/// A test class under its name, to be run by the program that it is linked into.
class TestEntry
{
public:
    using Run = int (*)(int argc, char** argv);
    TestEntry(const char* name, Run run);
};

/// Runs one test class with an application object of that kind around it.
template<typename Application, typename Test>
int runTest(int argc, char** argv)
{
    [[maybe_unused]] const Application application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace quillmate

/// Makes the folder's test program run the class when it is started with the class's name.
#define QUILLMATE_TEST(Test, Application)                                                                              \
    static const quillmate::TestEntry entryOf##Test(#Test, &quillmate::runTest<Application, Test>);
