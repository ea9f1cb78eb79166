## -- Put your custom code here -- ##
