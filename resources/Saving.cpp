// Saving the open edit and dropping it.
#include "resources/OrvoResources.h"

void OrvoResources::on_save_pressed() {}
void OrvoResources::on_cancel_pressed() {}
