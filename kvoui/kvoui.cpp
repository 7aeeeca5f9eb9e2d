#include "kvoui/kvoui.h"

#include "kvoui/widgetfiledialog.h"

#include <QtQml>

void kvouiInitPlugin()
{
    qmlRegisterType<WidgetFileDialog>("com.zuvy.kvoui", 1, 0, "WidgetFileDialog");
}
