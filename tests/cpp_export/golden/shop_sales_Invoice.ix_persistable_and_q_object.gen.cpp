/************************************************************************************************
** File created by Tavrel @APP_VERSION@ (2024/05/06 07:08) : please, do NOT modify this file ! **
************************************************************************************************/

#include "../include/Shop_precompiled_header.gen.h"

#include "../include/shop_sales_Invoice.gen.h"
#include "../include/shop_sales_Order.gen.h"

#include <Lumor_Impl.h>

ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_SHOP(shop::sales::Invoice, shop_sales_Invoice)

namespace zy {

template <>
void register_class(ZyClass<shop::sales::Invoice> & t)
{
   zy::IxDataMember * pData = NULL; Q_UNUSED(pData);
   zy::IxSqlRelation * pRelation = NULL; Q_UNUSED(pRelation);
   zy::IxFunction * pFct = NULL; Q_UNUSED(pFct);
   zy::IxValidator * pValidator = NULL; Q_UNUSED(pValidator);

   t.setName("t_invoice");
   t.setDescription("Invoice issued for a paid order; never changed once written");
   t.setDaoReadOnly(true);

   pData = t.id(& shop::sales::Invoice::m_invoice_no, "invoice_no", 0);

   pData = t.data(& shop::sales::Invoice::m_issued_on, "issued_on", 0, true, true);
   pData = t.data(& shop::sales::Invoice::m_amount, "amount", 0, true, true);

   pRelation = t.relationOneToOne(& shop::sales::Invoice::m_order, "order", 0);

   zy::ZyValidatorX<shop::sales::Invoice> * pAllValidator = t.getAllValidator(); Q_UNUSED(pAllValidator);
}

} // namespace zy

namespace shop {
namespace sales {

ZY_PERSISTABLE_CPP(Invoice)

Invoice::Invoice() : m_amount(0.0) { ; }

Invoice::Invoice(const QString & id) : m_invoice_no(id), m_amount(0.0) { ; }

Invoice::~Invoice() { ; }

QString Invoice::getinvoice_no() const { return m_invoice_no; }

QDate Invoice::getissued_on() const { return m_issued_on; }

double Invoice::getamount() const { return m_amount; }

Invoice::type_order Invoice::getorder() const { return m_order; }

void Invoice::setinvoice_no(const QString & val) { m_invoice_no = val; }

void Invoice::setissued_on(const QDate & val) { m_issued_on = val; }

void Invoice::setamount(const double & val) { m_amount = val; }

void Invoice::setorder(const Invoice::type_order & val) { m_order = val; }

Invoice::type_order Invoice::getorder(bool bLoadFromDatabase, const QString & sAppendRelations /* = QString() */, QSqlDatabase * pDatabase /* = NULL */, QSqlError * pDaoError /* = NULL */)
{
   if (pDaoError) { (* pDaoError) = QSqlError(); }
   if (! bLoadFromDatabase) { return getorder(); }
   QString sRelation = "{invoice_no} | order";
   if (! sAppendRelations.isEmpty() && ! sAppendRelations.startsWith("->") && ! sAppendRelations.startsWith(">>")) { sRelation += "->" + sAppendRelations; }
   else if (! sAppendRelations.isEmpty()) { sRelation += sAppendRelations; }
   shop::sales::Invoice tmp;
   tmp.m_invoice_no = this->m_invoice_no;
   QSqlError daoError = zy::dao::fetch_by_id_with_relation(sRelation, tmp, pDatabase);
   if (! daoError.isValid()) { this->m_order = tmp.m_order; }
   if (pDaoError) { (* pDaoError) = daoError; }
   return m_order;
}

} // namespace sales
} // namespace shop
