/************************************************************************************************
** File created by Tavrel @APP_VERSION@ (2024/05/06 07:08) : please, do NOT modify this file ! **
************************************************************************************************/

#ifndef _SHOP_SHOP_CUSTOMERPROFILE_H_
#define _SHOP_SHOP_CUSTOMERPROFILE_H_

#include "../include/shop_Base.gen.h"

namespace shop {

class SHOP_EXPORT CustomerProfile : public shop::Base
{

   ZY_REGISTER_FRIEND_CLASS(shop::CustomerProfile)

protected:

   QString m_bio; //!< Free text shown on the customer page
   bool m_newsletter;
   QString m_avatar_url;

public:

   CustomerProfile();
   CustomerProfile(const long & id);
   virtual ~CustomerProfile();

   QString getbio() const;
   bool getnewsletter() const;
   QString getavatar_url() const;

   void setbio(const QString & val);
   void setnewsletter(const bool & val);
   void setavatar_url(const QString & val);

public:

   static QString column_id(bool key = false) { Q_UNUSED(key); return "id"; }
   static QString column_created_at(bool key = false) { Q_UNUSED(key); return "created_at"; }
   static QString column_updated_at(bool key = false) { Q_UNUSED(key); return "updated_at"; }
   static QString column_bio(bool key = false) { Q_UNUSED(key); return "bio"; }
   static QString column_newsletter(bool key = false) { Q_UNUSED(key); return "newsletter"; }
   static QString column_avatar_url(bool key = false) { return (key ? QString("avatar_url") : QString("avatar")); }

public:

   static QString table_name(bool key = false) { return (key ? QString("CustomerProfile") : QString("t_customer_profile")); }

};

typedef std::shared_ptr<CustomerProfile> CustomerProfile_ptr;
typedef zy::ZyCollection<long, CustomerProfile_ptr> list_of_CustomerProfile;
typedef std::shared_ptr<list_of_CustomerProfile> list_of_CustomerProfile_ptr;

} // namespace shop

ZY_REGISTER_COMPLEX_CLASS_NAME_HPP_SHOP(shop::CustomerProfile, shop::Base, 0, shop_CustomerProfile)

#endif // _SHOP_SHOP_CUSTOMERPROFILE_H_
