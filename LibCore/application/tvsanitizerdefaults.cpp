// Linked into every program of a sanitizer build (make check): the leak
// checker's view of what the toolkit itself never frees, so that a program
// that ends cleanly says nothing, with no options set by its user.
//
// The offscreen platform never frees its screen, and the desktop's bus
// library keeps a buffer to the end. With fast unwinding (the default)
// Qt's frames stop the stack early, so the first line alone misses these;
// the others name the screen's parts as far as the stack reaches. The
// screen's are all indirect: a leak of our own still shows as a direct one.
// The script engine keeps what its first engine of a process sets up.

extern "C" const char* __lsan_default_suppressions()
{
    return "leak:QGuiApplicationPrivate::createPlatformIntegration\n"
           "leak:libqoffscreen.so\n"
           "leak:QScreen::QScreen\n"
           "leak:QPlatformScreen::QPlatformScreen\n"
           "leak:QWindowSystemInterface::handleScreenAdded\n"
           "leak:QtSharedPointer::ExternalRefCountData::getAndRef\n"
           "leak:QObject::QObject\n"
           "leak:libdbus-1.so\n"
           "leak:libQt5Script.so\n";
}

// A clean end prints nothing, not even the count of what was suppressed.
extern "C" const char* __lsan_default_options()
{
    return "print_suppressions=0";
}
