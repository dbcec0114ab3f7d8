#pragma once

class QWidget;

/// Gives a control the width that its text needs while the row that it belongs to stays aligned. A button never becomes
/// narrower than it is drawn, and when it grows, gets a margin as well: 4 points, 12 from a height of 32 on. Other
/// controls take the fitting size.
/// @param control null counts as one without width. @param anchorLeft true: the left edge stays where `offset` puts it,
/// and what is to the right follows; false: the right edge stays, and what is to the left follows.
/// @param offset by how much the controls before this one moved the row, in points.
/// @return the same for the next control.
float SizeToFit(QWidget* control, bool anchorLeft, float offset);

/// Enables or disables a control, or every control in a view that is none itself. What lies in a control is the control's
/// own affair.
void RecursivelyEnableSubviews(QWidget* view, bool enable);
