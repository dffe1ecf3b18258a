#pragma once

#include "platform/appkit/NSViewController.h"

namespace quillmate
{

/// The view controller that the Mail host shows for an extension. It stands with the views, not with the mail
/// protocols, since a view is what it is.
class MEExtensionViewController : public NSViewController
{
};

} // namespace quillmate
