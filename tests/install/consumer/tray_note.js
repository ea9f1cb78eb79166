// Appends a note to the tray's header, so that the test sees the script's changes reach the build.
function execute(params)
{
   if ((params.action === "BEFORE_CLOSING_FILE") && params.current_file.endsWith("greenhouse_Tray.gen.h"))
   { return params.default_value + "\n// tray note: first\n"; }
   return undefined;
}
