#include "context/ctx_global.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>
#include <QSettings>
#include <QUrl>

#include <memory>

#include "model/global_params.h"
#include "tavrel_paths.h"
#include "tavrel_version.h"

namespace context {

namespace {

const char * const k_lumorPathKey = "global/lumor_path";

struct global_state
{
   QMutex mutex;
   // The window clears itself when it goes (main_wnd's destructor), so a plain pointer is
   // enough and this layer needs no widget type.
   view::main_wnd * mainWnd = nullptr;
   // Empty parameters until a host initialises them; a host may also set none.
   model::global_params_ptr globalParams = std::make_shared<model::global_params>();
   QString settingsFile;
};

global_state & state()
{
   static global_state s;
   return s;
}

std::unique_ptr<QSettings> openSettings()
{
   QString file;
   { QMutexLocker lock(& state().mutex); file = state().settingsFile; }
   if (file.isEmpty()) { return std::make_unique<QSettings>(QStringLiteral("Tavrel"), QStringLiteral("Tavrel")); }
   return std::make_unique<QSettings>(file, QSettings::IniFormat);
}

} // namespace

QString ctx_global::getAppName() { return QStringLiteral("Tavrel"); }

QString ctx_global::getAppVersionStr() { return QStringLiteral(TAVREL_VERSION_STR); }

QString ctx_global::getAppHelpManualUrl()
{
   // The build tree mirrors the installed layout (its docs are copied at build time), so one
   // path relative to the program serves both.
   const QString appDir = (QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QDir::currentPath());
   const QString path = QDir::cleanPath(appDir + "/" TAVREL_REL_DOC_DIR "/user_guide.html");
   return QUrl::fromLocalFile(path).toString();
}

view::main_wnd * ctx_global::getMainWnd() { QMutexLocker lock(& state().mutex); return state().mainWnd; }

void ctx_global::setMainWnd(view::main_wnd * pMainWnd) { QMutexLocker lock(& state().mutex); state().mainWnd = pMainWnd; }

model::global_params_ptr ctx_global::getGlobalParams()
{
   QMutexLocker lock(& state().mutex);
   return state().globalParams;
}

void ctx_global::setGlobalParams(const model::global_params_ptr & p) { QMutexLocker lock(& state().mutex); state().globalParams = p; }

void ctx_global::initGlobalParams(const QString & lumorPathOption)
{
   QString path = lumorPathOption;
   if (path.isEmpty()) { path = qEnvironmentVariable("LUMOR_DIR"); }
   if (path.isEmpty()) { path = getSavedLumorPath(); }
   auto p = std::make_shared<model::global_params>();
   p->setLumorPath(path);
   setGlobalParams(p);
}

QString ctx_global::getSavedLumorPath() { return openSettings()->value(k_lumorPathKey).toString(); }

bool ctx_global::saveLumorPath(const QString & path)
{
   auto settings = openSettings();
   settings->setValue(k_lumorPathKey, path);
   settings->sync();
   return (settings->status() == QSettings::NoError);
}

void ctx_global::setSettingsFile(const QString & iniFile) { QMutexLocker lock(& state().mutex); state().settingsFile = iniFile; }

QString ctx_global::getSettingsFile() { QMutexLocker lock(& state().mutex); return state().settingsFile; }

} // namespace context
