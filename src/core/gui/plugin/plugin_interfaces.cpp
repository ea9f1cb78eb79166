#include "gui/plugin/base_interface.h"
#include "gui/plugin/export_interface.h"
#include "script/custom_javascript.h"

namespace plugin {

namespace {

QObject * asObject(base_interface * pPlugin) { return pPlugin; }

} // namespace

// Before the engine is handed this plug-in, it learns how to reach its signals.
base_interface::base_interface(QObject * parent) : QObject(parent) { tools::custom_javascript::setPluginObjectFct(& asObject); }
base_interface::~base_interface() { ; }
void base_interface::terminate() { ; }

export_interface::export_interface(QObject * parent) : base_interface(parent) { ; }
export_interface::~export_interface() { ; }

} // namespace plugin
