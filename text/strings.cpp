// placeholder, replaced by the module
