@@COMMENT_FILE_CREATED_BY@@

#ifdef _MSC_VER

#include <windows.h>

extern "C"
int WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID /* lpReservedt */)
{
   (void)hInstance;
   (void)dwReason;

#ifndef _ZY_NO_TRACE_DLL_ATTACH_DETACH
   switch (dwReason)
   {
      case DLL_PROCESS_ATTACH:   ::OutputDebugStringA("@@PROJECT_NAME@@.DllMain() ---> DLL_PROCESS_ATTACH\n");  break;
      case DLL_PROCESS_DETACH:   ::OutputDebugStringA("@@PROJECT_NAME@@.DllMain() ---> DLL_PROCESS_DETACH\n");  break;
      case DLL_THREAD_ATTACH:    ::OutputDebugStringA("@@PROJECT_NAME@@.DllMain() ---> DLL_THREAD_ATTACH\n");   break;
      case DLL_THREAD_DETACH:    ::OutputDebugStringA("@@PROJECT_NAME@@.DllMain() ---> DLL_THREAD_DETACH\n");   break;
   }
#endif // _ZY_NO_TRACE_DLL_ATTACH_DETACH

   return 1;
}

#endif // _MSC_VER
