// Example user script for the C++ export (setting "Custom javascript" of TavrelCppExport, or
// --TavrelCppExport_custom_javacript="user_script.js" on the command line).
//
// The export calls execute(params) once for every keyword of every template it expands, once
// more with the whole text of each file just before the file is compared and written, and at
// the start and the end of the export. params holds:
//
//   params.plugin_name      "TavrelCppExport"
//   params.output_location  the export directory
//   params.current_file     absolute path of the file being generated (empty at start and end)
//   params.default_value    the text the export writes when the script changes nothing
//   params.action           what is being generated:
//                             - the keyword, e.g. "CLASS_NAME", "NAMESPACE_BEGIN", or a keyword
//                               of your own written "@@CUSTOM_..." in a custom template
//                               (it produces nothing unless a script fills it);
//                             - "PLUGIN_EXPORT_START" / "PLUGIN_EXPORT_END": before the first
//                               and after the last file (the answer is ignored);
//                             - "BEFORE_CLOSING_FILE": default_value is the whole file text,
//                               the answer becomes the file text;
//                             - "AFTER_CLOSING_FILE": the file has been written (or left as it
//                               was because it did not change); the answer is ignored.
//   params.project, params.entity, params.property, params.enumeration
//                           read-only views of the model items of the call (null when none),
//                           e.g. params.entity.key, params.entity.description.
//
// The returned value, as text, replaces params.default_value; returning nothing (undefined)
// keeps it. A thrown error is shown in the message area: inside a class file its text becomes
// the file's content and the export goes on; inside a project file (CMakeLists.txt, *.pri...)
// it stops the export.
//
// This example, used with the custom templates custom_template.h / custom_template.cpp:
//   - fills the keyword @@CUSTOM_AUTHOR@@ with a comment line naming the author;
//   - adds a closing comment line at the end of every generated header (*.gen.h).

var AUTHOR = "Tavrel example team";

function endsWith(text, suffix) {
   return (typeof text === "string") && (text.length >= suffix.length)
       && (text.substring(text.length - suffix.length) === suffix);
}

function fileName(path) {
   return path.substring(path.lastIndexOf("/") + 1);
}

function execute(params) {
   if (params.action === "CUSTOM_AUTHOR") {
      var what = (params.entity ? params.entity.key : (params.enumeration ? params.enumeration.key : "project"));
      return "// Author of " + what + " : " + AUTHOR;
   }
   if ((params.action === "BEFORE_CLOSING_FILE") && endsWith(params.current_file, ".gen.h")) {
      return params.default_value + "// End of generated header " + fileName(params.current_file) + "\n";
   }
   return undefined;
}
