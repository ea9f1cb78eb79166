#pragma once

#include <QIcon>
#include <QObject>
#include <QSqlError>
#include <QString>
#include <QWidget>

#include "tavrelgui_export.h"


namespace plugin {

// What the host asks of every plug-in.
class TAVRELGUI_EXPORT base_interface : public QObject
{
   Q_OBJECT

public:
   explicit base_interface(QObject * parent = nullptr);
   virtual ~base_interface();

public Q_SLOTS:
   virtual QString getGuid() const = 0;
   virtual QString getName() const = 0;
   virtual QString getShortDesc() const = 0;
   virtual QString getDescription() const = 0;
   virtual QString getVersion() const = 0;
   virtual QString getCommandLineInfos() const = 0;
   virtual QIcon getIcon() const = 0;
   virtual QIcon getIconSettings() const = 0;
   virtual bool hasSettings() const = 0;
   virtual bool showSettings() = 0;
   virtual QSqlError saveSettings() = 0;
   virtual QSqlError loadSettings() = 0;
   virtual void clearSettings() = 0;
   virtual QWidget * getPreviewWidget() = 0;
   virtual void terminate();

Q_SIGNALS:
   // kind: 1 progress, 2 warning, 3 error; duration: display time in milliseconds.
   void onMessage(const QString & text, int kind, int duration);
};

} // namespace plugin
