#pragma once

// Stands in for a class whose members are not built yet: it can be created, aggregated, hosted and
// asked for its events and type information like every other object, and every member of its
// default interface, late-bound or not, answers E_NOTIMPL.

#include "component/ClassTable.h"

namespace tervane {

InstanceCreator CreatePendingObject;
InstanceCreator CreatePendingEventObject;
InstanceCreator CreatePendingControl;
InstanceCreator CreatePendingEventControl;

} // namespace tervane
