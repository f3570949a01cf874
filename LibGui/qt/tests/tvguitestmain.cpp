// The main of every widget test: one QApplication for the whole run, on the
// offscreen platform unless the caller chose another, so the tests need no
// display.

#include <gtest/gtest.h>

#include <QApplication>

// The offscreen platform never frees its screen. With fast unwinding (the
// default) Qt's frames stop the stack early, so the first line alone misses
// these; the others name the screen's parts as far as the stack reaches.
// All of them are indirect: a leak of our own still shows as a direct one.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:QGuiApplicationPrivate::createPlatformIntegration\n"
           "leak:libqoffscreen.so\n"
           "leak:QScreen::QScreen\n"
           "leak:QPlatformScreen::QPlatformScreen\n"
           "leak:QWindowSystemInterface::handleScreenAdded\n"
           "leak:QtSharedPointer::ExternalRefCountData::getAndRef\n"
           "leak:QObject::QObject\n";
}

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
