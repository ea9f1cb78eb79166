/************************************************************************************************
** File created by Tavrel @APP_VERSION@ (2024/05/06 07:08) : please, do NOT modify this file ! **
************************************************************************************************/

#include "../include/Shop_precompiled_header.gen.h"

#include "../include/shop_sales_Order.gen.h"
#include "../include/shop_Customer.gen.h"
#include "../include/shop_sales_OrderItem.gen.h"

#include <Lumor_Impl.h>

ZY_REGISTER_COMPLEX_CLASS_NAME_CPP_SHOP(shop::sales::Order, shop_sales_Order)

namespace shop {
namespace sales {
struct Q_DECL_HIDDEN Order::Order_impl
{
   QString m_number;
   QDateTime m_ordered_on;
   bool m_paid;
   std::optional<QString> m_note; //!< Free text of the customer
   shop::sales::OrderStatus::enum_OrderStatus m_status;
   Order::type_customer m_customer;
   Order::type_items m_items;

   Order_impl() : m_paid(false) { ; }
   Order_impl(const long & id) : m_paid(false) { ; }
   ~Order_impl() { ; }
};
} // namespace sales
} // namespace shop

namespace zy {

template <>
void register_class(ZyClass<shop::sales::Order> & t)
{
   zy::IxDataMember * pData = NULL; Q_UNUSED(pData);
   zy::IxSqlRelation * pRelation = NULL; Q_UNUSED(pRelation);
   zy::IxFunction * pFct = NULL; Q_UNUSED(pFct);
   zy::IxValidator * pValidator = NULL; Q_UNUSED(pValidator);
   zy::IxDataMember * pImpl = NULL; Q_UNUSED(pImpl);

   pImpl = t.pimpl(& shop::sales::Order::m_pImpl);

   t.setName("t_order");
   t.setDescription("A customer order");
   t.setPropertyBag("audit", "true");
   t.setPropertyBag("ui_icon", "order.png");

   pData = t.data(& shop::sales::Order::Order_impl::m_number, "number", 0, true, true, pImpl);
   pData->setIsUnique(true);
   pData = t.data(& shop::sales::Order::Order_impl::m_ordered_on, "ordered_on", 0, true, true, pImpl);
   pData = t.data(& shop::sales::Order::Order_impl::m_paid, "paid", 0, true, true, pImpl);
   pData = t.data(& shop::sales::Order::Order_impl::m_note, "note", 0, true, true, pImpl);
   pData->setDescription("Free text of the customer");
   pData = t.data(& shop::sales::Order::Order_impl::m_status, "status", 0, true, true, pImpl);

   pRelation = t.relationManyToOne(& shop::sales::Order::Order_impl::m_customer, "customer", 0, pImpl);
   pRelation = t.relationOneToMany(& shop::sales::Order::Order_impl::m_items, "items", "order_id", 0, pImpl);

   zy::ZyValidatorX<shop::sales::Order> * pAllValidator = t.getAllValidator(); Q_UNUSED(pAllValidator);
   pAllValidator->add_CustomValidator(std::mem_fn(& shop::sales::Order::validateOrder));
   pAllValidator->add_NotNull("number");
}

} // namespace zy

namespace shop {
namespace sales {

ZY_PERSISTABLE_CPP(Order)

Order::Order() : shop::Base(), m_pImpl(new Order_impl()) { ; }

Order::Order(const long & id) : shop::Base(id), m_pImpl(new Order_impl(id)) { ; }

Order::~Order() { ; }

Order::Order(const Order & other) : m_pImpl(new Order_impl(* other.m_pImpl)) { ; }

Order & Order::operator=(const Order & other)
{
   if (this != (& other)) { (* m_pImpl) = (* other.m_pImpl); }
   return (* this);
}

#ifdef Q_COMPILER_RVALUE_REFS
Order::Order(Order && other) Q_DECL_NOEXCEPT : m_pImpl(std::move(other.m_pImpl)) { ; }
Order & Order::operator=(Order && other) Q_DECL_NOEXCEPT { if (this != (& other)) { m_pImpl = std::move(other.m_pImpl); }; return (* this); }
#endif // Q_COMPILER_RVALUE_REFS

QString Order::getnumber() const { return m_pImpl->m_number; }

QDateTime Order::getordered_on() const { return m_pImpl->m_ordered_on; }

bool Order::getpaid() const { return m_pImpl->m_paid; }

QString Order::getnote() const { return (m_pImpl->m_note ? (* m_pImpl->m_note) : QString()); }

std::optional<QString> Order::getnote_() const { return m_pImpl->m_note; }

shop::sales::OrderStatus::enum_OrderStatus Order::getstatus() const { return m_pImpl->m_status; }

Order::type_customer Order::getcustomer() const { return m_pImpl->m_customer; }

Order::type_items Order::getitems() const { return m_pImpl->m_items; }

Order::type_items & Order::items() { return m_pImpl->m_items; }

const Order::type_items & Order::items() const { return m_pImpl->m_items; }

void Order::setnumber(const QString & val) { m_pImpl->m_number = val; }

void Order::setordered_on(const QDateTime & val) { m_pImpl->m_ordered_on = val; }

void Order::setpaid(const bool & val) { m_pImpl->m_paid = val; }

void Order::setnote(const std::optional<QString> & val) { m_pImpl->m_note = val; }

void Order::setstatus(const shop::sales::OrderStatus::enum_OrderStatus & val) { m_pImpl->m_status = val; }

void Order::setcustomer(const Order::type_customer & val) { m_pImpl->m_customer = val; }

void Order::setitems(const Order::type_items & val) { m_pImpl->m_items = val; }

Order::type_customer Order::getcustomer(bool bLoadFromDatabase, const QString & sAppendRelations /* = QString() */, QSqlDatabase * pDatabase /* = NULL */, QSqlError * pDaoError /* = NULL */)
{
   if (pDaoError) { (* pDaoError) = QSqlError(); }
   if (! bLoadFromDatabase) { return getcustomer(); }
   QString sRelation = "{id} | customer";
   if (! sAppendRelations.isEmpty() && ! sAppendRelations.startsWith("->") && ! sAppendRelations.startsWith(">>")) { sRelation += "->" + sAppendRelations; }
   else if (! sAppendRelations.isEmpty()) { sRelation += sAppendRelations; }
   shop::sales::Order tmp;
   tmp.m_pImpl->m_id = this->m_pImpl->m_id;
   QSqlError daoError = zy::dao::fetch_by_id_with_relation(sRelation, tmp, pDatabase);
   if (! daoError.isValid()) { this->m_pImpl->m_customer = tmp.m_pImpl->m_customer; }
   if (pDaoError) { (* pDaoError) = daoError; }
   return m_pImpl->m_customer;
}

Order::type_items Order::getitems(bool bLoadFromDatabase, const QString & sAppendRelations /* = QString() */, QSqlDatabase * pDatabase /* = NULL */, QSqlError * pDaoError /* = NULL */)
{
   if (pDaoError) { (* pDaoError) = QSqlError(); }
   if (! bLoadFromDatabase) { return getitems(); }
   QString sRelation = "{id} | items";
   if (! sAppendRelations.isEmpty() && ! sAppendRelations.startsWith("->") && ! sAppendRelations.startsWith(">>")) { sRelation += "->" + sAppendRelations; }
   else if (! sAppendRelations.isEmpty()) { sRelation += sAppendRelations; }
   shop::sales::Order tmp;
   tmp.m_pImpl->m_id = this->m_pImpl->m_id;
   QSqlError daoError = zy::dao::fetch_by_id_with_relation(sRelation, tmp, pDatabase);
   if (! daoError.isValid()) { this->m_pImpl->m_items = tmp.m_pImpl->m_items; }
   if (pDaoError) { (* pDaoError) = daoError; }
   return m_pImpl->m_items;
}

Order::type_items & Order::items(bool bLoadFromDatabase, const QString & sAppendRelations /* = QString() */, QSqlDatabase * pDatabase /* = NULL */, QSqlError * pDaoError /* = NULL */)
{
   if (pDaoError) { (* pDaoError) = QSqlError(); }
   if (! bLoadFromDatabase) { return items(); }
   QString sRelation = "{id} | items";
   if (! sAppendRelations.isEmpty() && ! sAppendRelations.startsWith("->") && ! sAppendRelations.startsWith(">>")) { sRelation += "->" + sAppendRelations; }
   else if (! sAppendRelations.isEmpty()) { sRelation += sAppendRelations; }
   shop::sales::Order tmp;
   tmp.m_pImpl->m_id = this->m_pImpl->m_id;
   QSqlError daoError = zy::dao::fetch_by_id_with_relation(sRelation, tmp, pDatabase);
   if (! daoError.isValid()) { this->m_pImpl->m_items = tmp.m_pImpl->m_items; }
   if (pDaoError) { (* pDaoError) = daoError; }
   return m_pImpl->m_items;
}

} // namespace sales
} // namespace shop
