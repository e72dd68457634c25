// Uploading files and forms to the stores.
#include "resources/OrvoResources.h"

void OrvoResources::on_actLoadFiles_triggered() {}
