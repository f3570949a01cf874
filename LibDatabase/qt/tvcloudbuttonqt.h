#ifndef TVCLOUDBUTTONQT_H
#define TVCLOUDBUTTONQT_H

// TVCloudButtonQt: the small flat button of a workspace that shows the
// state of its database's links to shared copies, and pushes when pressed.
// Hidden while the database has no link. Its icon, by the links' state in
// one (TVDatabase::get_cloud_state, off outranking all others):
//
//   initialising  CloudInit     downloading  CloudDown
//   off           CloudOff      uploading    CloudUp
//   idle          CloudPush while there is something to push, else CloudOK
//
// It follows the workspace's push_state_changed and the Drive service's
// state_changed. The workspace must outlive the button, or own it.

#include <QPointer>
#include <QPushButton>

#include <string>

class TVDBManagerQt;

class TVCloudButtonQt : public QPushButton
{
    Q_OBJECT

public:
    static constexpr const char* C_CloudOK = ":/LibGui/images/32/CloudOK.png";
    static constexpr const char* C_CloudPush = ":/LibGui/images/32/CloudPush.png";
    static constexpr const char* C_CloudUp = ":/LibGui/images/32/CloudUp.png";
    static constexpr const char* C_CloudDown = ":/LibGui/images/32/CloudDown.png";
    static constexpr const char* C_CloudInit = ":/LibGui/images/32/CloudInit.png";
    static constexpr const char* C_CloudOff = ":/LibGui/images/32/CloudOff.png";

    explicit TVCloudButtonQt(TVDBManagerQt* manager, QWidget* parent = nullptr);
    void set_defaults(bool constructing);

    // The resource of the icon shown now.
    const std::string& get_icon() const { return m_icon; }
    bool get_needs_push() const { return m_needsPush; }

public slots:
    void update_state();
    // Writes the database to every link, manual ones too; a link that is
    // off is reported instead.
    void push();

private:
    void set_icon(const char* icon);

    QPointer<TVDBManagerQt> m_manager;
    std::string m_icon;
    bool m_needsPush = false;
};

#endif // TVCLOUDBUTTONQT_H
