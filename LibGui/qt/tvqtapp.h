#ifndef TVQTAPP_H
#define TVQTAPP_H

#include <QApplication>

class TVApplicationQt;

// The toolkit's application object with the program's own event handling:
// files the system asks us to open arrive here, possibly before the
// application object has started.
class TVQtApp : public QApplication
{
    Q_OBJECT

public:
    TVQtApp(int& argc, char** argv);
    ~TVQtApp() override;

    void set_app(TVApplicationQt* app) { m_app = app; }
    TVApplicationQt* get_app() const { return m_app; }

    bool event(QEvent* event) override;

private:
    TVApplicationQt* m_app = nullptr;
};

#endif
