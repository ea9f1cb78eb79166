// The property editor.

#include "desktop/property_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QMap>
#include <QTabWidget>

#include "model/entity.h"
#include "model/enumeration.h"
#include "model/property.h"
#include "model/property_type.h"
#include "model/relationship.h"

namespace desktop {

namespace {

typedef void (model::property::* flag_setter)(bool);
typedef bool (model::property::* flag_getter)() const;
struct flag_field { const char * szName; const char * szLabel; flag_getter get; flag_setter set; };

const flag_field k_flags[] = {
   { "m_chkPrimaryKey", "Primary key", & model::property::isPrimaryKey, & model::property::setPrimaryKey },
   { "m_chkAllowNull", "Allows null", & model::property::getAllowNull, & model::property::setAllowNull },
   { "m_chkUnique", "Unique", & model::property::getUnique, & model::property::setUnique },
   { "m_chkIndex", "Index", & model::property::isIndex, & model::property::setIndex },
   { "m_chkReadOnly", "Read only", & model::property::isReadOnly, & model::property::setReadOnly },
   { "m_chkTransient", "Transient", & model::property::isTransient, & model::property::setTransient },
   { "m_chkSerializable", "Serializable", & model::property::isSerializable, & model::property::setSerializable },
   { "m_chkWriteAccessors", "Write accessors", & model::property::getWriteAccessors, & model::property::setWriteAccessors },
   { "m_chkObsolete", "Obsolete", & model::property::isObsolete, & model::property::setObsolete },
};

typedef void (model::property::* text_setter)(const QString &);
typedef QString (model::property::* text_getter)() const;
struct text_field { const char * szName; const char * szLabel; text_getter get; text_setter set; QString (* rule)(const QString &); };

const text_field k_texts[] = {
   { "m_txtGetMethod", "Get method body", & model::property::getGetMethod, & model::property::setGetMethod, & field_rules::body },
   { "m_txtSetMethod", "Set method body", & model::property::getSetMethod, & model::property::setSetMethod, & field_rules::body },
   { "m_txtRegExp", "Regular expression", & model::property::getRegExp, & model::property::setRegExp, & field_rules::escaped },
   { "m_txtForceSqlType", "Forced SQL type", & model::property::getForceSqlType, & model::property::setForceSqlType, & field_rules::sqlType },
   { "m_txtForceSqlAlias", "Forced SQL alias", & model::property::getForceSqlAlias, & model::property::setForceSqlAlias, & field_rules::escaped },
   { "m_txtFormat", "Format", & model::property::getFormat, & model::property::setFormat, & field_rules::escaped },
};

typedef void (model::property::* limit_setter)(const QVariant &);
typedef QVariant (model::property::* limit_getter)() const;
struct limit_field { const char * szName; const char * szLabel; limit_getter get; limit_setter set; };

const limit_field k_limits[] = {
   { "m_txtMinValue", "Minimum value", & model::property::getMinValue, & model::property::setMinValue },
   { "m_txtMaxValue", "Maximum value", & model::property::getMaxValue, & model::property::setMaxValue },
   { "m_txtMinLength", "Minimum length", & model::property::getMinLength, & model::property::setMinLength },
   { "m_txtMaxLength", "Maximum length", & model::property::getMaxLength, & model::property::setMaxLength },
};

// A limit typed as a plain number is kept as a number, as the JSON import keeps 80 apart from "80".
QVariant limitValue(const QString & s)
{
   if (s.isEmpty()) { return QVariant(); }
   bool bOk = false;
   const qlonglong i = s.toLongLong(& bOk);
   if (bOk && (QString::number(i) == s)) { return QVariant(i); }
   const double d = s.toDouble(& bOk);
   if (bOk && (QString::number(d, 'g', 17) == s)) { return QVariant(d); }
   return QVariant(s);
}

} // namespace

QStringList property_dialog::commonTypes()
{
   return { "QString", "int", "long", "long long", "qint64", "double", "float", "bool", "QDate", "QDateTime", "QTime",
            "QByteArray", "QUuid", "QVariant", "QStringList", "std::string", "unsigned int", "short", "char" };
}

property_dialog::property_dialog(const model::property & p, const model_state & state, const QStringList & lstTaken, QWidget * parent)
   : item_dialog(p.getName().isEmpty() ? tr("New property") : tr("Property %1").arg(p.getName()), parent), m_lstTakenNames(lstTaken)
{
   setObjectName("property_dialog");
   QTabWidget * pTabs = new QTabWidget(this);
   pTabs->setObjectName("m_tabProperty");
   pTabs->addTab(createGeneralPage(p, state), tr("General"));
   pTabs->addTab(createRelationPage(p, state), tr("Relation"));
   pTabs->addTab(createMorePage(p), tr("Limits and code"));
   m_pLayout->addWidget(pTabs);
   addMetaTable(p.getAllMetaData());
   m_pMarks->addCheck([this]() { return crossFieldProblem(); });
   finish();
   doRelationToggled(m_grpRelation->isChecked());
}

QWidget * property_dialog::createGeneralPage(const model::property & p, const model_state & state)
{
   QWidget * pPage = new QWidget(this);
   QFormLayout * pForm = new QFormLayout(pPage);
   const model::property_type_ptr pType = p.getType();
   const bool bOwnType = (pType && ! pType->isFromEnumeration());
   m_txtName = addLine(pForm, "m_txtName", tr("Name"), p.getName(), & field_rules::name);
   m_cboType = addCombo(pForm, "m_cboType", tr("Type"), QStringList { QString() } + commonTypes(), true);
   m_cboType->setCurrentText(bOwnType ? pType->getPrimitiveType() : QString());
   m_pMarks->add(m_cboType, tr("Type"), & field_rules::cppType);
   m_cboDecoration = addCombo(pForm, "m_cboDecoration", tr("Decoration"), { tr("none"), "std::shared_ptr<T>", "QSharedPointer<T>", "std::optional<T>" }, false);
   m_cboDecoration->setCurrentIndex(pType ? pType->getDecoration() : 0);
   m_cboCollection = addCombo(pForm, "m_cboCollection", tr("Collection"), { tr("none"), "QList<T>", "std::vector<T>" }, false);
   m_cboCollection->setCurrentIndex(pType ? pType->getCollection() : 0);
   QStringList lstEnums { QString() };
   QMap<QString, QString> mapEnumTypes;
   for (const model::enumeration_ptr & e : state.enumerations) { if (e) { lstEnums.append(e->getKey()); mapEnumTypes.insert(e->getKey(), e->getCppEnumType()); } }
   m_cboEnumeration = addCombo(pForm, "m_cboEnumeration", tr("Enumeration"), lstEnums, false);
   m_cboEnumeration->setCurrentIndex(qMax(0, static_cast<int>(lstEnums.indexOf(p.getEnumerationKey()))));
   auto fnTypeHint = [this, mapEnumTypes]() {
      const QString sEnumType = mapEnumTypes.value(m_cboEnumeration->currentText());
      if (m_cboType->lineEdit()) { m_cboType->lineEdit()->setPlaceholderText(sEnumType); }
   };
   fnTypeHint();
   // A property of an enumeration has the enumeration's type: an empty type follows it, renames too.
   connect(m_cboEnumeration, & QComboBox::currentTextChanged, this, [this, fnTypeHint](const QString & sEnum) {
      if (! sEnum.isEmpty()) { m_cboType->setCurrentText(QString()); }
      fnTypeHint();
   });
   m_txtDefault = addLine(pForm, "m_txtDefault", tr("Default value"), pType ? pType->getDefaultValue() : QString(), [this](const QString & s) { return defaultProblem(s); });
   connect(m_cboType, & QComboBox::currentTextChanged, m_pMarks, & field_marks::update);
   connect(m_cboEnumeration, & QComboBox::currentTextChanged, m_pMarks, & field_marks::update);
   connect(m_cboDecoration, & QComboBox::currentIndexChanged, m_pMarks, & field_marks::update);
   connect(m_cboCollection, & QComboBox::currentIndexChanged, m_pMarks, & field_marks::update);
   m_txtColumn = addLine(pForm, "m_txtColumn", tr("Column"), p.getColumnName(), & field_rules::literal);
   m_txtColumn->setPlaceholderText(tr("the property's name"));
   m_txtDescription = addLine(pForm, "m_txtDescription", tr("Description"), p.getDescription(), & field_rules::lineComment);
   m_cboAccess = addCombo(pForm, "m_cboAccess", tr("Accessibility"), { tr("public"), tr("protected"), tr("private") }, false);
   m_cboAccess->setCurrentIndex(p.getAccessibility());
   for (const flag_field & f : k_flags) { m_mapFlags.insert(f.szName, addCheck(pForm, f.szName, tr(f.szLabel), (p.*f.get)())); }
   return pPage;
}

QWidget * property_dialog::createRelationPage(const model::property & p, const model_state & state)
{
   QWidget * pPage = new QWidget(this);
   QVBoxLayout * pLayout = new QVBoxLayout(pPage);
   m_grpRelation = new QGroupBox(tr("The property is a relation"), pPage);
   m_grpRelation->setObjectName("m_grpRelation");
   m_grpRelation->setCheckable(true);
   const model::relationship_ptr pRelation = p.getRelation();
   m_grpRelation->setChecked(pRelation != nullptr);
   QFormLayout * pForm = new QFormLayout(m_grpRelation);
   m_cboKind = addCombo(pForm, "m_cboKind", tr("Kind"), { tr("one-to-one"), tr("one-to-many"), tr("many-to-one"), tr("many-to-many") }, false);
   m_cboKind->setCurrentIndex(pRelation ? pRelation->getType() : model::relationship::many_to_one);
   QStringList lstTargets { QString() };
   for (const model::entity_ptr & e : state.entities) { if (e) { lstTargets.append(e->getKey()); } }
   m_cboTarget = addCombo(pForm, "m_cboTarget", tr("Target entity"), lstTargets, false);
   m_cboTarget->setCurrentIndex(qMax(0, static_cast<int>(lstTargets.indexOf(pRelation ? pRelation->getTargetKey() : QString()))));
   m_txtForeignKey = addLine(pForm, "m_txtForeignKey", tr("Foreign key"), pRelation ? pRelation->getForeignKey() : QString(), & field_rules::literal);
   m_txtOwner = addLine(pForm, "m_txtOwner", tr("Foreign key owner"), pRelation ? pRelation->getForeignKeyOwner() : QString(), & field_rules::literal);
   m_txtExtraTable = addLine(pForm, "m_txtExtraTable", tr("Extra table"), pRelation ? pRelation->getExtraTable() : QString(), & field_rules::tableName);
   pLayout->addWidget(m_grpRelation);
   pLayout->addStretch(1);
   connect(m_grpRelation, & QGroupBox::toggled, this, & property_dialog::doRelationToggled);
   connect(m_cboTarget, & QComboBox::currentTextChanged, m_pMarks, & field_marks::update);
   return pPage;
}

QWidget * property_dialog::createMorePage(const model::property & p)
{
   QWidget * pPage = new QWidget(this);
   QFormLayout * pForm = new QFormLayout(pPage);
   for (const limit_field & f : k_limits)
   {
      const QVariant v = (p.*f.get)();
      m_mapTexts.insert(f.szName, addLine(pForm, f.szName, tr(f.szLabel), v.isValid() ? v.toString() : QString(), & field_rules::number));
   }
   for (const text_field & f : k_texts) { m_mapTexts.insert(f.szName, addLine(pForm, f.szName, tr(f.szLabel), (p.*f.get)(), f.rule)); }
   return pPage;
}

void property_dialog::doRelationToggled(bool bOn)
{
   // A relation's type is the relation's: the type fields are for data members only.
   for (QWidget * w : std::initializer_list<QWidget *> { m_cboType, m_cboDecoration, m_cboCollection, m_cboEnumeration, m_txtDefault }) { w->setEnabled(! bOn); }
   m_pMarks->update();
}

QString property_dialog::defaultProblem(const QString & s) const
{
   // A text default is escaped into a string literal; any other is written as code (the rule
   // the model's own check picks by the same type test).
   model::property probe;
   auto pType = std::make_shared<model::property_type>();
   pType->setPrimitiveType(m_cboType->currentText().trimmed());
   probe.setType(pType);
   return (probe.isString() ? field_rules::escaped(s) : field_rules::expression(s));
}

QString property_dialog::crossFieldProblem() const
{
   const QString sName = m_txtName->text().trimmed();
   if (m_lstTakenNames.contains(sName)) { return tr("The entity already has a property '%1'").arg(sName); }
   if (m_grpRelation->isChecked())
   {
      return (m_cboTarget->currentText().isEmpty() ? tr("Relation : pick the target entity") : QString());
   }
   const bool bTyped = ! (m_cboType->currentText().trimmed().isEmpty() && m_cboEnumeration->currentText().isEmpty());
   const bool bWrapped = (m_cboDecoration->currentIndex() > 0) || (m_cboCollection->currentIndex() > 0) || ! m_txtDefault->text().isEmpty();
   if (! bTyped && bWrapped) { return tr("Decoration, collection and default need a type or an enumeration"); }
   return QString();
}

void property_dialog::applyTo(model::property & p) const
{
   p.setName(m_txtName->text().trimmed());
   p.setColumnName(m_txtColumn->text().trimmed());
   p.setDescription(m_txtDescription->text());
   p.setAccessibility(m_cboAccess->currentIndex());
   for (const flag_field & f : k_flags) { (p.*f.set)(m_mapFlags.value(f.szName)->isChecked()); }
   for (const text_field & f : k_texts) { (p.*f.set)(m_mapTexts.value(f.szName)->text()); }
   for (const limit_field & f : k_limits)
   {
      (p.*f.set)(limitValue(m_mapTexts.value(f.szName)->text().trimmed()));
   }
   p.setAllMetaData(metaData());
   if (m_grpRelation->isChecked())
   {
      auto pRelation = std::make_shared<model::relationship>();
      if (p.getRelation()) { * pRelation = * p.getRelation(); }
      pRelation->setType(m_cboKind->currentIndex());
      pRelation->setTargetKey(m_cboTarget->currentText());
      pRelation->setForeignKey(m_txtForeignKey->text().trimmed());
      pRelation->setForeignKeyOwner(m_txtOwner->text().trimmed());
      pRelation->setExtraTable(m_txtExtraTable->text().trimmed());
      p.setRelation(pRelation);
      p.setType(model::property_type_ptr());
      p.setEnumerationKey(QString());
      return;
   }
   p.setRelation(model::relationship_ptr());
   p.setEnumerationKey(m_cboEnumeration->currentText());
   const QString sType = m_cboType->currentText().trimmed();
   if (sType.isEmpty() && m_cboEnumeration->currentText().isEmpty()) { p.setType(model::property_type_ptr()); return; }
   auto pType = std::make_shared<model::property_type>();
   pType->setId(p.getId());
   pType->setPrimitiveType(sType);
   pType->setFromEnumeration(sType.isEmpty());
   pType->setDecoration(m_cboDecoration->currentIndex());
   pType->setCollection(m_cboCollection->currentIndex());
   pType->setDefaultValue(m_txtDefault->text());
   p.setType(pType);
}

} // namespace desktop
