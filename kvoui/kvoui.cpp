#include "kvoui/kvoui.h"

#include "kvoui/widgetfiledialog.h"

#include <qqml.h>

void kvouiInitPlugin()
{
    qmlRegisterType<WidgetFileDialog>("com.zuvy.kvoui", 1, 0, "WidgetFileDialog");
}
