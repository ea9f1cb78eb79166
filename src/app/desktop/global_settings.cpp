#include "desktop/global_settings.h"

#include <QBoxLayout>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "context/ctx_global.h"
#include "model/global_params.h"
#include "gui/tools/message_box.h"

namespace desktop {

global_settings::global_settings(const QString & lumorPathOption, QWidget * parent) : QDialog(parent), m_sLumorPathOption(lumorPathOption)
{
   setObjectName("global_settings");
   setWindowTitle(context::ctx_global::getAppName() + " - " + tr("Global settings"));
   resize(640, 220);

   QGroupBox * pGroup = new QGroupBox(tr("Lumor library"), this);
   m_txtLumorPath = new QLineEdit(pGroup);
   m_txtLumorPath->setObjectName("m_txtLumorPath");
   m_txtLumorPath->setText(context::ctx_global::getSavedLumorPath());
   m_txtLumorPath->setPlaceholderText("/opt/lumor  or  $$(LUMOR_DIR)");
   m_txtLumorPath->setToolTip(tr("Directory of the Lumor library. It may hold environment references written $$(NAME), ${NAME} or $NAME."));
   m_btnLumorPath = new QPushButton("...", pGroup);
   m_btnLumorPath->setObjectName("m_btnLumorPath");
   QHBoxLayout * pPathRow = new QHBoxLayout();
   pPathRow->addWidget(m_txtLumorPath, 1);
   pPathRow->addWidget(m_btnLumorPath);
   QFormLayout * pForm = new QFormLayout(pGroup);
   pForm->addRow(tr("Lumor library path :"), pPathRow);

   // Tell the user when the saved value is not the one in force.
   QString sNote;
   if (! m_sLumorPathOption.isEmpty()) { sNote = tr("This session uses the path given by --lumor-path ('%1'): the value saved here is used by the next sessions.").arg(m_sLumorPathOption); }
   else if (! qEnvironmentVariable("LUMOR_DIR").isEmpty()) { sNote = tr("The environment variable LUMOR_DIR ('%1') is set: it is used instead of the value saved here.").arg(qEnvironmentVariable("LUMOR_DIR")); }
   m_lblNote = new QLabel(sNote, this);
   m_lblNote->setObjectName("m_lblNote");
   m_lblNote->setWordWrap(true);
   m_lblNote->setVisible(! sNote.isEmpty());

   m_btnOk = new QPushButton(tr("Ok"), this);
   m_btnOk->setObjectName("m_btnOk");
   m_btnOk->setDefault(true);
   m_btnCancel = new QPushButton(tr("Cancel"), this);
   m_btnCancel->setObjectName("m_btnCancel");
   QHBoxLayout * pButtons = new QHBoxLayout();
   pButtons->addStretch(1);
   pButtons->addWidget(m_btnOk);
   pButtons->addWidget(m_btnCancel);

   QVBoxLayout * pLayout = new QVBoxLayout(this);
   pLayout->addWidget(pGroup);
   pLayout->addWidget(m_lblNote);
   pLayout->addStretch(1);
   pLayout->addLayout(pButtons);

   connect(m_btnOk, & QPushButton::clicked, this, & global_settings::doBtnOk);
   connect(m_btnCancel, & QPushButton::clicked, this, & global_settings::reject);
   connect(m_btnLumorPath, & QPushButton::clicked, this, & global_settings::doBtnLumorPath);
}

global_settings::~global_settings() { ; }

void global_settings::doBtnLumorPath()
{
   const QString sStart = (QFileInfo(m_txtLumorPath->text()).isDir() ? m_txtLumorPath->text() : QString());
   const QString sChosen = QFileDialog::getExistingDirectory(this, tr("Select Lumor library directory"), sStart, QFileDialog::ShowDirsOnly);
   if (! sChosen.isEmpty()) { m_txtLumorPath->setText(QDir::toNativeSeparators(sChosen)); }
}

void global_settings::doBtnOk()
{
   const QString sPath = m_txtLumorPath->text().trimmed();
   if (! context::ctx_global::saveLumorPath(sPath))
   {
      tools::message_box::critical(this, windowTitle(), tr("Cannot save the global settings."));
      return;
   }
   context::ctx_global::initGlobalParams(m_sLumorPathOption);
   // The path may name an environment variable that is not set yet: only a warning.
   model::global_params saved;
   saved.setLumorPath(sPath);
   const QString sResolved = saved.getLumorPath(true);
   const QString sProblem = saved.getLumorPathProblem();
   if (! sPath.isEmpty() && ! sProblem.isEmpty())
   {
      tools::message_box::warning(this, windowTitle(), tr("Saved, but an export refuses this Lumor library path : it %1").arg(sProblem));
   }
   else if (! sPath.isEmpty() && (sResolved.isEmpty() || ! QDir(sResolved).exists()))
   {
      tools::message_box::warning(this, windowTitle(), tr("Saved, but the Lumor library path doesn't name an existing directory : '%1'").arg(sResolved.isEmpty() ? sPath : sResolved));
   }
   accept();
}

} // namespace desktop
