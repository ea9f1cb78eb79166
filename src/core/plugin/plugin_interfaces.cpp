#include "plugin/base_interface.h"
#include "plugin/export_interface.h"
#include "tools/custom_javascript.h"

namespace plugin {

base_interface::base_interface(QObject * parent) : QObject(parent) { ; }
base_interface::~base_interface() { ; }
void base_interface::terminate() { ; }

export_interface::export_interface(QObject * parent) : base_interface(parent) { ; }
export_interface::~export_interface() { ; }

} // namespace plugin
