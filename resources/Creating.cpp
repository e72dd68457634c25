// Creating rows and editing them in the passport, with the icon picker.
#include "resources/OrvoResources.h"

void OrvoResources::on_actAddModule_triggered() {}
void OrvoResources::on_actAddFunction_triggered() {}
void OrvoResources::on_actAddFolder_triggered() {}
void OrvoResources::on_editor_valueChanged(const QString&, const QVariant&) {}
void OrvoResources::on_passp_buttonpressed(const QString&) {}
void OrvoResources::on_poplist_OK_Pressed() {}
