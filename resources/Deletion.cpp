// Deleting folders and resources.
#include "resources/OrvoResources.h"

void OrvoResources::on_actDelete_triggered() {}
void OrvoResources::removeResourceMessage(QAbstractButton*) {}
