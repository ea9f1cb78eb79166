/************************************************************************************************
** File created by Tavrel @APP_VERSION@ (2024/05/06 07:08) : please, do NOT modify this file ! **
************************************************************************************************/

#ifndef _SHOP_SHOP_SALES_ORDER_H_
#define _SHOP_SHOP_SALES_ORDER_H_

#include "../include/shop_Base.gen.h"
#include "../include/shop_sales_OrderStatus.gen.h"

namespace shop {
class Customer;
} // namespace shop
namespace shop {
namespace sales {
class OrderItem;
} // namespace sales
} // namespace shop

namespace shop {
namespace sales {
class Order;
} // namespace sales
} // namespace shop

namespace zy {
namespace dao {
namespace detail {

template <>
struct ZyDao_Trigger<shop::sales::Order>;

} // namespace detail
} // namespace dao
} // namespace zy

namespace shop {
namespace sales {

/*!
 * \brief A customer order
 */
class SHOP_EXPORT Order : public shop::Base
{

   ZY_REGISTER_FRIEND_CLASS(shop::sales::Order)
   friend struct zy::dao::detail::ZyDao_Trigger<shop::sales::Order>;
   ZY_PERSISTABLE_HPP(shop::sales::Order)

public:

   typedef std::shared_ptr<shop::Customer> type_customer;
   typedef zy::ZyCollection<long, std::shared_ptr<shop::sales::OrderItem> > type_items;

private:

   struct Order_impl;
   std::unique_ptr<Order_impl> m_pImpl; //!< Private implementation idiom

public:

   Order();
   Order(const long & id);
   virtual ~Order();

   Order(const Order & other);
   Order & operator=(const Order & other);

#ifdef Q_COMPILER_RVALUE_REFS
   Order(Order && other) Q_DECL_NOEXCEPT;
   Order & operator=(Order && other) Q_DECL_NOEXCEPT;
#endif // Q_COMPILER_RVALUE_REFS

   QString getnumber() const;
   QDateTime getordered_on() const;
   bool getpaid() const;
   QString getnote() const;
   std::optional<QString> getnote_() const;
   shop::sales::OrderStatus::enum_OrderStatus getstatus() const;
   Order::type_customer getcustomer() const;
   Order::type_items getitems() const;
   Order::type_items & items();
   const Order::type_items & items() const;

   void setnumber(const QString & val);
   void setordered_on(const QDateTime & val);
   void setpaid(const bool & val);
   void setnote(const std::optional<QString> & val);
   void setstatus(const shop::sales::OrderStatus::enum_OrderStatus & val);
   void setcustomer(const Order::type_customer & val);
   void setitems(const Order::type_items & val);

   Order::type_customer getcustomer(bool bLoadFromDatabase, const QString & sAppendRelations = QString(), QSqlDatabase * pDatabase = NULL, QSqlError * pDaoError = NULL);
   Order::type_items getitems(bool bLoadFromDatabase, const QString & sAppendRelations = QString(), QSqlDatabase * pDatabase = NULL, QSqlError * pDaoError = NULL);
   Order::type_items & items(bool bLoadFromDatabase, const QString & sAppendRelations = QString(), QSqlDatabase * pDatabase = NULL, QSqlError * pDaoError = NULL);

private:

   // The following validator method must be implemented in a custom code
   void validateOrder(zy::ZyInvalidValueX & invalidValues);

public:

   static QString relation_customer(bool key = false) { Q_UNUSED(key); return "customer"; }
   static QString relation_items(bool key = false) { Q_UNUSED(key); return "items"; }

public:

   static QString column_id(bool key = false) { Q_UNUSED(key); return "id"; }
   static QString column_created_at(bool key = false) { Q_UNUSED(key); return "created_at"; }
   static QString column_updated_at(bool key = false) { Q_UNUSED(key); return "updated_at"; }
   static QString column_number(bool key = false) { Q_UNUSED(key); return "number"; }
   static QString column_ordered_on(bool key = false) { Q_UNUSED(key); return "ordered_on"; }
   static QString column_paid(bool key = false) { Q_UNUSED(key); return "paid"; }
   static QString column_note(bool key = false) { Q_UNUSED(key); return "note"; }
   static QString column_status(bool key = false) { Q_UNUSED(key); return "status"; }

public:

   static QString table_name(bool key = false) { return (key ? QString("Order") : QString("t_order")); }

protected:

   // The following triggers methods must be implemented in a custom code
   virtual void onAfterFetch(zy::dao::detail::IxDao_Helper * dao);
   virtual void onBeforeInsert(zy::dao::detail::IxDao_Helper * dao);
   virtual void onBeforeUpdate(zy::dao::detail::IxDao_Helper * dao);

};

typedef std::shared_ptr<Order> Order_ptr;
typedef zy::ZyCollection<long, Order_ptr> list_of_Order;
typedef std::shared_ptr<list_of_Order> list_of_Order_ptr;

} // namespace sales
} // namespace shop

ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_SHOP(shop::sales::Order, shop::Base, 0, shop_sales_Order)

namespace zy {
namespace dao {
namespace detail {

template <>
struct ZyDao_Trigger<shop::sales::Order>
{

   static inline void onBeforeFetch(shop::sales::Order * t, zy::dao::detail::IxDao_Helper * dao)  { zy::dao::detail::ZyDao_Trigger<shop::Base>::onBeforeFetch(static_cast<shop::Base *>(t), dao); }
   static inline void onAfterFetch(shop::sales::Order * t, zy::dao::detail::IxDao_Helper * dao)  { if (t) { t->onAfterFetch(dao); } }
   static inline void onBeforeInsert(shop::sales::Order * t, zy::dao::detail::IxDao_Helper * dao)  { if (t) { t->onBeforeInsert(dao); } }
   static inline void onAfterInsert(shop::sales::Order * t, zy::dao::detail::IxDao_Helper * dao)  { zy::dao::detail::ZyDao_Trigger<shop::Base>::onAfterInsert(static_cast<shop::Base *>(t), dao); }
   static inline void onBeforeUpdate(shop::sales::Order * t, zy::dao::detail::IxDao_Helper * dao)  { if (t) { t->onBeforeUpdate(dao); } }
   static inline void onAfterUpdate(shop::sales::Order * t, zy::dao::detail::IxDao_Helper * dao)  { zy::dao::detail::ZyDao_Trigger<shop::Base>::onAfterUpdate(static_cast<shop::Base *>(t), dao); }
   static inline void onBeforeDelete(shop::sales::Order * t, zy::dao::detail::IxDao_Helper * dao)  { zy::dao::detail::ZyDao_Trigger<shop::Base>::onBeforeDelete(static_cast<shop::Base *>(t), dao); }
   static inline void onAfterDelete(shop::sales::Order * t, zy::dao::detail::IxDao_Helper * dao)  { zy::dao::detail::ZyDao_Trigger<shop::Base>::onAfterDelete(static_cast<shop::Base *>(t), dao); }

};

} // namespace detail
} // namespace dao
} // namespace zy

#include "../include/shop_Customer.gen.h"
#include "../include/shop_sales_OrderItem.gen.h"

#include "../custom/include/shop_sales_Order.h"

#endif // _SHOP_SHOP_SALES_ORDER_H_
