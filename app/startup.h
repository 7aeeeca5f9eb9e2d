#pragma once

#include <QIcon>

class Backend;
class QQmlApplicationEngine;

// Sets the style and the window icon, and registers the QML types. Call it once, after creating the
// application object and before creating an engine. Returns the icon; the application keeps a copy.
QIcon prepareApplication();

// Loads the window and returns its controller, which the window owns. Returns null if the document
// or a QML module is missing or broken.
Backend* loadWindow(QQmlApplicationEngine& engine);
