#ifndef AUTOOLS_CATALOGUE_COMPONENTDECISION_H
#define AUTOOLS_CATALOGUE_COMPONENTDECISION_H

class CComponent;
class CRelease;

/// 1 when the workstation must act on this component of the release; also kept as the component's update status. Always
/// 1 without a release.
int IsComponentUpdateNecessary(CComponent* component, const CRelease* release);

#endif
