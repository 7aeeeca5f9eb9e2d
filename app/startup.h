#pragma once

#include <QIcon>

class Backend;
class QQmlApplicationEngine;

// The start-up of the program, which its benchmark and the test of its window share.

// Sets the style and the window icon, and registers the QML types. Call once, after the application
// object exists and before any engine does. The result is the icon; keep it as long as the engine.
QIcon prepareApplication();

// Loads the window. The result belongs to it; null if there is none, as the document or a QML
// module is missing.
Backend* loadWindow(QQmlApplicationEngine& engine);
