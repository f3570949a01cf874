#include "LibGui/qt/tvsettingsformqt.h"

#include "LibCore/error/tverror.h"

TVSettingsFormQt::TVSettingsFormQt(QWidget* parent) : QWidget(parent)
{
}

TVSettingsFormQt::~TVSettingsFormQt() = default;

void TVSettingsFormQt::update_display()
{
}

int TVSettingsFormQt::read_form() const
{
    return TVErrC_ok;
}
