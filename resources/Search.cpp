// The search bar.
#include "resources/OrvoResources.h"

void OrvoResources::on_search_up_pressed() {}
void OrvoResources::on_search_down_pressed() {}
void OrvoResources::on_search_textChanged(const QString&) {}
void OrvoResources::on_searchCmb_indexChanged(int) {}
