// Sample WSDL PAGING_SERVER: sends a message, asks about it, adds a group, and is refused once.

using System;
using System.Text.RegularExpressions;
using System.Web.Services.Protocols;

static class Sample
{
    static ResponseActionData Choice(string response, string action, bool isFinal)
    {
        // The "Specified" twin of a number or boolean tells whether it is sent at all.
        return new ResponseActionData {
            szResponse = response, szAction = action, bFinal = isFinal, bFinalSpecified = true
        };
    }

    static void Main(string[] args)
    {
        string pager = args[1];
        var service = new Quorbel();
        // When the service is reached by another address than the description named when the class was made:
        // service.Url = "https://soap.plant.example/cgi-bin/quorbel-soap";

        // The arguments are the elements in the description's order; null, or false for "Specified", leaves one out.
        string sent = service.SendStdMessage(
            pager, null, null, "oncall", null, 2, true, true, true,
            new[] { Choice("1", "ack", true), Choice("2", "escalate", false) },
            new[] { new CustomFieldData { szFieldName = "ticket", szFieldValue = "T-7" } },
            "Pump 4 <hot> & \"loud\"", "ops", false, false, null, null);
        Console.WriteLine("sent: " + sent.Trim());

        string job = Regex.Match(sent, @"job (\S+)").Groups[1].Value;
        QueryResult answer = service.QueryMessage(pager, null, null, job, null);
        Console.WriteLine("query: " + answer.szResponseMessage);
        foreach (string line in answer.szResult) Console.WriteLine("  " + line);

        string added = service.AddGroup(pager, "admin", "secret", "night", "Night shift", null, null, false, false,
                                        null, true, true, false, false, null);
        Console.WriteLine("added: " + added.Trim());

        try {
            service.DeleteGroup(pager, "admin", "", "night", null);
        } catch (SoapException fault) {
            Console.WriteLine("fault: " + fault.Message);
        }
    }
}
