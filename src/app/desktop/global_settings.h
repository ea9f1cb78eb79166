#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace desktop {

// Tools > Global settings: the Lumor library path kept in the user's settings.
class global_settings : public QDialog
{
   Q_OBJECT

   QLineEdit * m_txtLumorPath = nullptr;
   QPushButton * m_btnLumorPath = nullptr;
   QLabel * m_lblNote = nullptr;
   QPushButton * m_btnOk = nullptr;
   QPushButton * m_btnCancel = nullptr;
   QString m_sLumorPathOption;

public:
   // lumorPathOption: the host's --lumor-path, which outranks the saved setting.
   explicit global_settings(const QString & lumorPathOption, QWidget * parent = nullptr);
   virtual ~global_settings();

   QLineEdit * getLumorPathEdit() const { return m_txtLumorPath; }

public Q_SLOTS:
   void doBtnOk();
   void doBtnLumorPath();
};

} // namespace desktop
