#pragma once

// Makes the QML module "com.zuvy.kvoui" 1.0 importable, with the folder chooser WidgetFileDialog.
// Call once, after the application object exists and before an engine loads a document.
void kvouiInitPlugin();
