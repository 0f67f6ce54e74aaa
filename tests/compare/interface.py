"""The methods of the service and their elements, as clients know them.

A list of its own: a wrong row in the program under test must not hide here as well.
"""

COMMON = "szURL szURL2 szAdminName szAdminPassword".split()

_ELEMENTS = """
AddReceiver2Group: szReceiverName szGroupName nDelay
DeleteReceiverFromGroup: szReceiverName szGroupName
AddGroup2Group: szMasterGroupName szGroupName nDelay
DeleteGroupFromGroup: szMasterGroupName szGroupName
AddGroup: szGroupName szDescription szGroupType szDepartment bEnableOwnerSettings szUser bAlertOwner
    bLimitAcess
QueryGroup: szGroupName
DeleteGroup: szGroupName
AddReceiver: szVoiceNumber szReceiverName szDescription szDepartment szType szPIN szCarrier szBackupPIN
    szBackupCarrier bVoiceEnable nTimeZone bKeepAlphaForNumType szEmail bEmailFaileover bEmailCC szFirstName
    szLastName szSecurityCode szAcctName szAcctPwd bCanUpdRece bCanUpdSchd szDeviceStatus szForwardTo
DeleteReceiver: szReceiverName
QueryReceiver: szReceiverName
AddDepartment: szDepartmentName szDescription
DeleteDepartment: szDepartmentName
QueryDepartment: szDepartmentName
AddUser: szUserName szPassword szDescription szUserGroup szAccesCode szEmail bCLI bGUI bResultToEmail szUserIP
    nTimeZone szLinkPassword szLinkUserName szAppHost szDbHost szAuthen szNTDomain szNTPassword szNTUserName
    szNewUserName
ModifyUser: szUserName szPassword szDescription szUserGroup szAccesCode szEmail bCLI bGUI bResultToEmail
    szUserIP nTimeZone szLinkPassword szLinkUserName szAppHost szDbHost szAuthen szNTDomain szNTPassword
    szNTUserName szNewUserName
DeleteUser: szUserName
QueryUser: szUserName
AddUserGroup: szUserGroupName szDescription bLog bDirectory bLicense bMessenger bGroupReport bGroupUser bQueue
    bCarrier bMonitor bEmailGateway bAction bTemplate bUseTemplate bService bStdSend bTwoWaySend
    bEscelationSend bScheduleSend bFaxSend bVoiceSend bQuickSend bSendreceWithoutDeptLicense
    bSendgrpWithoutDeptLicense bRreceiverWithoutDeptLicense bAddgroupWithoutDeptLicense
    bModgroupWithoutDeptLicense bEnableConfidMode
DeleteUserGroup: szUserGroupName
QueryUserGroup: szUserGroupName
SetUserGroupDeptPermission: szUserGroupName szDeptName bSendReceiver bSendGroup bManageReceiver bViewReceiver
    bAddAndDeleteGroup bModifyGroup bViewGroup
SetUserGroupUgp: szUserGroupName szUpgName bViewReport bManageUser
SendStdMessage: szRecipientName szJobID nPriority bTimeStamp ResponseActionData szResponse szAction bFinal
    CustomFieldData szFieldName szFieldValue szMessage szSender bForwardReply szSubject
SendQuickMessage: szCarrierName szPIN szJobID nPriority bTimeStamp szMessage szAltCarrierName szAltPIN
    szSender szSubject
QueryMessage: szJobID
QueryGroupMessage: szJobID
QueryMessageHistory: szJobID
ConfirmMessage: szJobID
"""


def _read(text):
    """{"AddGroup": ["szGroupName", ...], ...} from lines "method: elements", which may be continued."""
    methods = {}
    for word in text.split():
        if word.endswith(":"):
            elements = methods.setdefault(word[:-1], [])
        else:
            elements.append(word)
    return methods


METHODS = _read(_ELEMENTS)
ALL_ELEMENTS = sorted({element for elements in METHODS.values() for element in elements} | set(COMMON))

# The parts of the two wrappers of SendStdMessage; everywhere else an element stands alone.
WRAPPERS = {
    "ResponseActionData": ["szResponse", "szAction", "bFinal"],
    "CustomFieldData": ["szFieldName", "szFieldValue"],
}
WRAPPED = {part for parts in WRAPPERS.values() for part in parts}
