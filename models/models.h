// models.h: the models and delegates of both editors in one include.
#ifndef ORVO_MODELS_MODELS_H
#define ORVO_MODELS_MODELS_H

#include "models/DesckDelegate.h"
#include "models/DesckTreeModel.h"
#include "models/MenuTreeModel.h"
#include "models/MyButtonEdit.h"
#include "models/PasspDelegate.h"
#include "models/PopTreeModel.h"
#include "models/PropModel.h"
#include "models/ResTreeModel.h"

#endif
